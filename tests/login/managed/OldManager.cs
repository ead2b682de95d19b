using System;
using System.Reflection;
using loginManagerUtils;

[assembly: AssemblyVersion("33.1.0.0")]

namespace OrvelLoginClient
{
    public delegate void LoginHandlerDelegate();

    public delegate void LogoutHandlerDelegate();

    public class LoginResponse
    {
        public string statusDescription;
    }

    /// A manager of another version, which lacks nearly all that the library calls.
    public class LoginManagerClient
    {
        public LoginManagerClient(LoginHandlerDelegate login, LogoutHandlerDelegate logout, langCode language)
        {
        }

        public LoginResponse login(string userName, string password)
        {
            return new LoginResponse { statusDescription = "" };
        }

        public string getTenantName()
        {
            return "Old Works";
        }

        /// Throws the LoginManagerException of loginManagerUtils, or a TimeoutException if that assembly has none.
        public string getAccessToken()
        {
            Type own = typeof(langCode).Assembly.GetType("loginManagerUtils.LoginManagerException");
            throw (Exception)Activator.CreateInstance(own ?? typeof(TimeoutException), "refused");
        }
    }
}
