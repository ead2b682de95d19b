using System;
using System.Collections.Generic;
using System.Globalization;
using System.Reflection;
using System.Threading;
using loginManagerUtils;

[assembly: AssemblyVersion(ManagerVersion.Text)]
[assembly: AssemblyTitle("Stand-in for the login manager")]

namespace OrvelLoginClient
{
    public delegate void LoginHandlerDelegate();

    public delegate void LogoutHandlerDelegate();

    public class LoginResponse
    {
        public string statusDescription;
        public string userName;
        public string firstName;
        public string lastName;
        public string rowId;
        public string aliasName;
        public string domainName;
    }

    /// A login manager with a small account store in memory and without a server, for trying the library out. Tests control
    /// it through Steering.
    public class LoginManagerClient : IDisposable
    {
        class Account
        {
            public string Password, FirstName, LastName, RowId, Alias, Domain;
        }

        // Not secrets: these accounts exist only in this file.
        static readonly Dictionary<string, Account> accounts = new Dictionary<string, Account>
        {
            { "ada@example.com", new Account { Password = "analytical engine", FirstName = "Ada", LastName = "Lovelace", RowId = "1815", Alias = "Countess", Domain = "example.com" } },
            { "zoe@example.com", new Account { Password = "κωδικός", FirstName = "Ζωή", LastName = "Παπαδοπούλου", RowId = "2042", Alias = "Zoë 🦉", Domain = null } },
        };

        static string lastUser; // login() without credentials signs this user in
        static string dunmoreToken;

        readonly LoginHandlerDelegate loggedIn;
        readonly LogoutHandlerDelegate loggedOut;
        readonly langCode language;
        string user;
        string token;

        public LoginManagerClient(LoginHandlerDelegate login, LogoutHandlerDelegate logout, langCode language)
        {
            loggedIn = login;
            loggedOut = logout;
            this.language = language;
            Interlocked.Increment(ref Steering.Alive);
            Steering.Handlers = login == null ? logout == null ? "none" : "logout" : logout == null ? "login" : "login logout";
            Steering.Read();
            Steering.Obey("constructor");
            if (Steering.Steers("exit"))
                AppDomain.CurrentDomain.ProcessExit += (sender, e) =>
                {
                    Steering.Obey("exit");
                    loggedOut();
                };
        }

        ~LoginManagerClient()
        {
            Interlocked.Decrement(ref Steering.Alive);
        }

        public void Dispose()
        {
            if (Steering.Obey("Dispose") == "event" && loggedOut != null)
                Steering.Raise(() => loggedOut());
        }

        public LoginResponse login()
        {
            if (Steering.Nulls("login"))
                return null;
            if (lastUser == null)
                throw new LoginManagerException(loginManagerStatusCode.UnknownUser, "nobody has signed in yet");
            return SignIn(lastUser, "signed in again");
        }

        public LoginResponse login(string userName, string password)
        {
            if (Steering.Nulls("login"))
                return null;
            if (Steering.Echoes("login"))
                return new LoginResponse { statusDescription = "", userName = userName, firstName = password, lastName = "", rowId = "", aliasName = "" };
            Account account;
            if (!accounts.TryGetValue(userName, out account))
                throw new LoginManagerException(loginManagerStatusCode.UnknownUser, "there is no account " + userName);
            if (account.Password != password)
                throw new LoginManagerException(loginManagerStatusCode.WrongPassword, "wrong password");
            return SignIn(userName, "signed in");
        }

        public LoginResponse getLoggedInUser()
        {
            return Steering.Nulls("getLoggedInUser") ? null : Response(SignedIn(), "is signed in");
        }

        public void Logout()
        {
            Steering.Obey("Logout");
            SignedIn();
            user = token = null;
            if (loggedOut != null)
                Steering.Raise(() => loggedOut());
        }

        public string getAccessToken()
        {
            return Steering.Text("getAccessToken", token);
        }

        public string formatAccessURL(string targeturl)
        {
            return Steering.Echoes("formatAccessURL") ? targeturl : Steering.Text("formatAccessURL", targeturl + "?access_token=" + token);
        }

        public string getPlatformURL() { return Steering.Text("getPlatformURL", "https://platform.example.com/"); }
        public string getRegistryURL() { return Steering.Text("getRegistryURL", "https://registry.example.com/"); }
        public string getPassportURL() { return Steering.Text("getPassportURL", "https://passport.example.com/"); }
        public string getCASCookie() { return Steering.Text("getCASCookie", token == null ? null : "CASTGC=" + token); }
        public string getmyAppsURL() { return Steering.Text("getmyAppsURL", "https://apps.example.com/" + (int)language); }
        public string getKelpaURL() { return Steering.Text("getKelpaURL", "https://kelpa.example.com/"); }
        public string getTenantName() { return Steering.Text("getTenantName", "Example Works"); }
        public string getTenantId() { return Steering.Text("getTenantId", "R1132100"); }
        public string getTenantIds() { return Steering.Text("getTenantIds", "R1132100,R1132101"); }
        public string getSpaceURL() { return Steering.Text("getSpaceURL", "https://space.example.com/"); }

        public string getLoginTicket(string spaceurl)
        {
            return Steering.Echoes("getLoginTicket") ? spaceurl : Steering.Text("getLoginTicket", "ST-" + NewToken() + "@" + spaceurl);
        }

        public void stopDNMListener()
        {
            Steering.Obey("stopDNMListener");
        }

        public static void DunmoreLoginBrowser(string server, string clientId)
        {
            Steering.Obey("DunmoreLoginBrowser");
            dunmoreToken = DateTime.UtcNow.AddHours(1).Ticks.ToString(CultureInfo.InvariantCulture) + "." + clientId + "@" + server;
        }

        public static string getDNMAccessToken()
        {
            return Steering.Text("getDNMAccessToken", dunmoreToken);
        }

        /// A token begins with the ticks at which it expires. Any other text counts as expired.
        public static bool isDunmorePlatformTokenExpired(string token)
        {
            Steering.Obey("isDunmorePlatformTokenExpired");
            long expires = 0;
            for (int i = 0; i < token.Length && token[i] >= '0' && token[i] <= '9'; i++)
                expires = expires * 10 + (token[i] - '0');
            return expires <= DateTime.UtcNow.Ticks;
        }

        LoginResponse SignIn(string userName, string outcome)
        {
            lastUser = user = userName;
            token = NewToken();
            LoginResponse response = Response(userName, outcome);
            if (loggedIn != null)
                Steering.Raise(() => loggedIn());
            return response;
        }

        static LoginResponse Response(string userName, string outcome)
        {
            Account account = accounts[userName];
            return new LoginResponse
            {
                statusDescription = Steering.Text("statusDescription", account.FirstName + " " + outcome),
                userName = Steering.Text("userName", userName),
                firstName = Steering.Text("firstName", account.FirstName),
                lastName = Steering.Text("lastName", account.LastName),
                rowId = Steering.Text("rowId", account.RowId),
                aliasName = Steering.Text("aliasName", account.Alias),
                domainName = Steering.Text("domainName", account.Domain),
            };
        }

        string SignedIn()
        {
            if (user == null)
                throw new LoginManagerException(loginManagerStatusCode.NotSignedIn, "nobody is signed in");
            return user;
        }

        static string NewToken()
        {
            return Guid.NewGuid().ToString("N");
        }
    }
}
