using System;
using System.Reflection;

[assembly: AssemblyVersion("34.0.0.5070")]
[assembly: AssemblyTitle("Stand-in for the login manager's shared types")]

namespace loginManagerUtils
{
    /// Languages of this stand-in's user interface.
    public enum langCode
    {
        English, ChineseSimplified, ChineseTraditional, Czech, French, German, Italian, Japanese, Korean, Polish,
        PortugueseBrazil, Russian, Spanish, Turkish
    }

    /// Outcomes of this stand-in.
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
