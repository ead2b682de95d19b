using System;
using System.Runtime.InteropServices;

namespace OrvelLoginClientCLR
{
    /// Strings for the native side, which owns and frees them.
    static class BStr
    {
        /// Null for null. Throws when there is no memory, which some runtimes report by a null, too.
        public static IntPtr From(string text)
        {
            IntPtr copy = Marshal.StringToBSTR(text);
            if (copy == IntPtr.Zero && text != null)
                throw new OutOfMemoryException();
            return copy;
        }
    }
}
