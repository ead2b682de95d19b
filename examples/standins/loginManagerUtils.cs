using System;
using System.Reflection;

[assembly: AssemblyVersion(ManagerVersion.Text)]
[assembly: AssemblyTitle("Stand-in for the login manager's shared types")]

namespace loginManagerUtils
{
    /// Languages of the user interface, as this stand-in numbers them.
    public enum langCode
    {
        English, ChineseSimplified, ChineseTraditional, Czech, French, German, Italian, Japanese, Korean, Polish,
        PortugueseBrazil, Russian, Spanish, Turkish
    }

    /// Status codes, as this stand-in numbers them.
    public enum loginManagerStatusCode
    {
        Success, WrongPassword, UnknownUser, SessionExpired, ServerUnreachable, AccountLocked, NoResponse, NotSignedIn, Other
    }

    public class LoginManagerException : Exception
    {
        public loginManagerStatusCode status;

        public LoginManagerException(loginManagerStatusCode status, string message) : base(message)
        {
            this.status = status;
        }
    }
}
