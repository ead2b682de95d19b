using System;

namespace loginManagerUtils
{
    public enum langCode
    {
        Only
    }

#if !WITHOUT_EXCEPTION
    /// Of another version, in which the status is not a field.
    public class LoginManagerException : Exception
    {
        public LoginManagerException(string message) : base(message)
        {
        }

        public int status { get { return 3; } }
    }
#endif
}
