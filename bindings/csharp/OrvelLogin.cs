using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;
using Microsoft.Win32.SafeHandles;

/// The login library for C#, in this one file, over the plain functions of orvelloginc.dll. For 32-bit processes
/// (-platform:x86) on the .NET Framework 4 or later; C# 6 or later.
namespace Orvel.Login
{
    /// A failure that the login manager itself reported: a refused password, a server that does not answer.
    public class LoginManagerException : Exception
    {
        internal LoginManagerException(int code, string message) : base(message)
        {
            Code = code;
        }

        /// The manager's number, 0 to 8; 6 also if the manager returned no record, 8 also for any other number.
        public int Code { get; }
    }

    /// Any other failure: an exception of the managed runtime, or a runtime that could not be started.
    public class LoginRuntimeException : Exception
    {
        internal LoginRuntimeException(string typeName, string message, int hresult)
            : base(typeName.Length == 0 ? message : typeName + ": " + message)
        {
            TypeName = typeName;
            HResult = hresult;
        }

        /// Full name of the managed exception's type; empty if there was no managed exception.
        public string TypeName { get; }
    }

    /// The login manager's data about a signed-in user.
    public sealed class LoginResponse
    {
        internal LoginResponse(ref Native.Response record)
        {
            StatusDescription = Marshal.PtrToStringBSTR(record.statusDescription);
            UserName = Marshal.PtrToStringBSTR(record.userName);
            FirstName = Marshal.PtrToStringBSTR(record.firstName);
            LastName = Marshal.PtrToStringBSTR(record.lastName);
            RowId = Marshal.PtrToStringBSTR(record.rowId);
            AliasName = Marshal.PtrToStringBSTR(record.aliasName);
            DomainName = Marshal.PtrToStringBSTR(record.domainName);
        }

        public string StatusDescription { get; } // outcome of the sign-in, as the manager phrased it
        public string UserName { get; }
        public string FirstName { get; }
        public string LastName { get; }
        public string RowId { get; } // identifier of the user's record on the platform
        public string AliasName { get; }
        public string DomainName { get; } // empty when the account has none
    }

    /// Signs a user in to the online account service. Failures are the two exceptions above. For what a member does while
    /// offline, or with a null from the manager, see the function of the same name in orvelloginc.h.
    ///
    /// A client may be used from any thread, but only from one at a time. Disposing it does not sign out.
    public sealed class LoginManagerClient : IDisposable
    {
        // Never removed, so never collected: the library calls the last client's delegates even after that client is gone.
        static readonly Dictionary<Action, Native.Callback> kept = new Dictionary<Action, Native.Callback>();

        readonly Native.Client client;

        /// `onLogin`, `onLogout`: called each time the manager reports a sign-in or a sign-out, on any thread; they must not
        /// throw. Those of the client whose manager was created last serve all clients.
        /// `language`: 0 to 13, as the manager numbers them.
        public LoginManagerClient(Action onLogin = null, Action onLogout = null, int language = 0)
        {
            Native.Failure failure = Native.Failure.Unset;
            Native.Check(Native.orvellogin_create(Keep(onLogin), IntPtr.Zero, Keep(onLogout), IntPtr.Zero, language, out client, ref failure), ref failure);
        }

        public void Dispose()
        {
            client.Dispose();
        }

        public LoginResponse Login()
        {
            return Record((ref Native.Response user, ref Native.Failure failure) => Native.orvellogin_login(client, ref user, ref failure));
        }

        public LoginResponse Login(string userName, string password)
        {
            return Record((ref Native.Response user, ref Native.Failure failure) => Native.orvellogin_loginWithPassword(
                client, userName, Length(userName), password, Length(password), ref user, ref failure));
        }

        public LoginResponse GetLoggedInUser(bool lastLogin)
        {
            return Record((ref Native.Response user, ref Native.Failure failure) => Native.orvellogin_getLoggedInUser(client, lastLogin ? 1 : 0, ref user, ref failure));
        }

        public void Logout() { Plain(Native.orvellogin_logout); }

        public string FormatAccessUrl(string targetUrl) { return TextOf(Native.orvellogin_formatAccessUrl, targetUrl); }
        public string GetAccessToken() { return Text(Native.orvellogin_getAccessToken); }
        public string GetPlatformUrl() { return Text(Native.orvellogin_getPlatFormURL); }
        public string GetRegistryUrl() { return Text(Native.orvellogin_getRegistryURL); }
        public string GetKelpaUrl() { return Text(Native.orvellogin_getKelpaURL); }
        public string GetTenantName() { return Text(Native.orvellogin_getTenantName); }
        public string GetPassportUrl() { return Text(Native.orvellogin_getPassportURL); }
        public string GetCasCookie() { return Text(Native.orvellogin_getCASCookie); }
        public string GetMyAppsUrl() { return Text(Native.orvellogin_getmyAppsURL); }
        public string GetTenantId() { return Text(Native.orvellogin_getTenantId); }
        public string GetTenantIds() { return Text(Native.orvellogin_getTenantIds); }
        public string GetLoginTicket(string spaceUrl) { return TextOf(Native.orvellogin_getLoginTicket, spaceUrl); }
        public string GetSpaceUrl() { return Text(Native.orvellogin_getSpaceURL); }

        public void StopDnmListener() { Plain(Native.orvellogin_stopDNMListener); }
        public string GetDnmAccessToken() { return Text(Native.orvellogin_getDNMAccessToken); }

        public void DunmoreLoginBrowser(string server, string clientId)
        {
            Native.Failure failure = Native.Failure.Unset;
            Native.Check(Native.orvellogin_DunmoreLoginBrowser(client, server, Length(server), clientId, Length(clientId), ref failure), ref failure);
        }

        public bool IsDunmorePlatformTokenExpired(string token)
        {
            int expired;
            Native.Failure failure = Native.Failure.Unset;
            Native.Check(Native.orvellogin_isDunmorePlatformTokenExpired(client, token, Length(token), out expired, ref failure), ref failure);
            return expired != 0;
        }

        public bool OfflineMode
        {
            get { return Native.orvellogin_isOrvelOfflineMode(client) != 0; }
            set { Native.orvellogin_setOrvelOfflineMode(client, value ? 1 : 0); }
        }

        delegate Native.Result RecordCall(ref Native.Response user, ref Native.Failure failure);

        static Native.Callback Keep(Action action)
        {
            if (action == null)
                return null;
            lock (kept)
            {
                Native.Callback callback;
                if (!kept.TryGetValue(action, out callback))
                    kept.Add(action, callback = context => action());
                return callback;
            }
        }

        static int Length(string text)
        {
            if (text == null)
                throw new ArgumentNullException();
            return text.Length;
        }

        void Plain(Native.PlainCall call)
        {
            Native.Failure failure = Native.Failure.Unset;
            Native.Check(call(client, ref failure), ref failure);
        }

        string Text(Native.TextCall call)
        {
            string text;
            Native.Failure failure = Native.Failure.Unset;
            Native.Check(call(client, out text, ref failure), ref failure);
            return text;
        }

        string TextOf(Native.TextOfTextCall call, string argument)
        {
            string text;
            Native.Failure failure = Native.Failure.Unset;
            Native.Check(call(client, argument, Length(argument), out text, ref failure), ref failure);
            return text;
        }

        static LoginResponse Record(RecordCall call)
        {
            var user = new Native.Response { size = Marshal.SizeOf(typeof(Native.Response)) };
            Native.Failure failure = Native.Failure.Unset;
            Native.Check(call(ref user, ref failure), ref failure);
            try
            {
                return new LoginResponse(ref user);
            }
            finally
            {
                Native.orvellogin_clearResponse(ref user);
            }
        }
    }

    /// The functions of orvelloginc.h. The marshaller copies and frees the BSTRs of `out string` parameters.
    static class Native
    {
        const string Dll = "orvelloginc.dll";

        internal enum Result { Ok, Reported, Failed, NoMemory, BadCall }

        internal delegate void Callback(IntPtr context);
        internal delegate Result PlainCall(Client client, ref Failure failure);
        internal delegate Result TextCall(Client client, out string text, ref Failure failure);
        internal delegate Result TextOfTextCall(Client client, string argument, int length, out string text, ref Failure failure);

        internal sealed class Client : SafeHandleZeroOrMinusOneIsInvalid
        {
            Client() : base(true) { }

            protected override bool ReleaseHandle()
            {
                orvellogin_destroy(handle);
                return true;
            }
        }

        // Without the last field, `text`, which `size` tells the library.
        internal struct Failure
        {
            internal int size;
            internal int code;
            internal int hresult;
            internal IntPtr typeName;
            internal IntPtr message;

            internal static Failure Unset
            {
                get { return new Failure { size = Marshal.SizeOf(typeof(Failure)) }; }
            }
        }

        internal struct Response
        {
            internal int size;
            internal IntPtr statusDescription;
            internal IntPtr userName;
            internal IntPtr firstName;
            internal IntPtr lastName;
            internal IntPtr rowId;
            internal IntPtr aliasName;
            internal IntPtr domainName;
        }

        internal static void Check(Result result, ref Failure failure)
        {
            if (result == Result.Ok)
                return;
            // The texts are null if there was no memory for them.
            int code = failure.code, hresult = failure.hresult;
            string typeName = failure.typeName == IntPtr.Zero ? "" : Marshal.PtrToStringBSTR(failure.typeName);
            string message = failure.message == IntPtr.Zero ? "" : Marshal.PtrToStringBSTR(failure.message);
            orvellogin_clearFailure(ref failure);
            switch (result)
            {
                case Result.Reported:
                    throw new LoginManagerException(code, message);
                case Result.Failed:
                    throw new LoginRuntimeException(typeName, message, hresult);
                case Result.NoMemory:
                    throw new OutOfMemoryException();
                default:
                    throw new ArgumentException(message);
            }
        }

        [DllImport(Dll)] static extern void orvellogin_destroy(IntPtr client);
        [DllImport(Dll)] static extern void orvellogin_clearFailure(ref Failure failure);
        [DllImport(Dll)] internal static extern void orvellogin_clearResponse(ref Response response);
        [DllImport(Dll)] internal static extern Result orvellogin_create(Callback onLogin, IntPtr loginContext, Callback onLogout, IntPtr logoutContext, int language, out Client client, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_login(Client client, ref Response user, ref Failure failure);
        [DllImport(Dll, CharSet = CharSet.Unicode)] internal static extern Result orvellogin_loginWithPassword(Client client, string userName, int userNameLength, string password, int passwordLength, ref Response user, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_getLoggedInUser(Client client, int lastLogin, ref Response user, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_logout(Client client, ref Failure failure);
        [DllImport(Dll, CharSet = CharSet.Unicode)] internal static extern Result orvellogin_formatAccessUrl(Client client, string targetUrl, int length, [MarshalAs(UnmanagedType.BStr)] out string url, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_getAccessToken(Client client, [MarshalAs(UnmanagedType.BStr)] out string token, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_getPlatFormURL(Client client, [MarshalAs(UnmanagedType.BStr)] out string url, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_getRegistryURL(Client client, [MarshalAs(UnmanagedType.BStr)] out string url, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_getKelpaURL(Client client, [MarshalAs(UnmanagedType.BStr)] out string url, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_getTenantName(Client client, [MarshalAs(UnmanagedType.BStr)] out string name, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_getPassportURL(Client client, [MarshalAs(UnmanagedType.BStr)] out string url, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_getCASCookie(Client client, [MarshalAs(UnmanagedType.BStr)] out string cookie, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_getmyAppsURL(Client client, [MarshalAs(UnmanagedType.BStr)] out string url, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_getTenantId(Client client, [MarshalAs(UnmanagedType.BStr)] out string id, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_getTenantIds(Client client, [MarshalAs(UnmanagedType.BStr)] out string ids, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_getSpaceURL(Client client, [MarshalAs(UnmanagedType.BStr)] out string url, ref Failure failure);
        [DllImport(Dll, CharSet = CharSet.Unicode)] internal static extern Result orvellogin_getLoginTicket(Client client, string spaceUrl, int length, [MarshalAs(UnmanagedType.BStr)] out string ticket, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_stopDNMListener(Client client, ref Failure failure);
        [DllImport(Dll, CharSet = CharSet.Unicode)] internal static extern Result orvellogin_DunmoreLoginBrowser(Client client, string server, int serverLength, string clientId, int clientIdLength, ref Failure failure);
        [DllImport(Dll)] internal static extern Result orvellogin_getDNMAccessToken(Client client, [MarshalAs(UnmanagedType.BStr)] out string token, ref Failure failure);
        [DllImport(Dll, CharSet = CharSet.Unicode)] internal static extern Result orvellogin_isDunmorePlatformTokenExpired(Client client, string token, int length, out int expired, ref Failure failure);
        [DllImport(Dll)] internal static extern void orvellogin_setOrvelOfflineMode(Client client, int offline);
        [DllImport(Dll)] internal static extern int orvellogin_isOrvelOfflineMode(Client client);
    }
}
