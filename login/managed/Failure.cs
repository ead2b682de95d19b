using System;
using System.Runtime.InteropServices;

namespace OrvelLoginClientCLR
{
    /// How a member ended when it did not return. Layout: `ManagedFailure` in login/ManagedPart.h.
    [StructLayout(LayoutKind.Sequential)]
    struct Failure
    {
        public int isManagerException;
        public int status;
        public int hresult;
        public IntPtr typeName;
        public IntPtr message;

        /// Takes down `e` and returns the outcome that says so.
        public int Report(Exception e)
        {
            try
            {
                hresult = Marshal.GetHRForException(e);
                typeName = Marshal.StringToBSTR(e.GetType().FullName);
                message = Marshal.StringToBSTR(e.Message);
            }
            catch (Exception)
            {
                // An exception of another's making may throw when it is asked for its message, and memory may be exhausted.
                // What was taken down so far must do: nothing may get out into native code.
            }
            return 1;
        }
    }
}
