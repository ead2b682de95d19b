using System;
using System.Runtime.InteropServices;

namespace OrvelLoginClientCLR
{
    /// A string for the native side, which frees what is in it. Layout: `ManagedString` in login/ManagedString.h.
    [StructLayout(LayoutKind.Sequential)]
    unsafe struct NativeString
    {
        const int Capacity = 256;

        IntPtr bstr;
        int length;
        fixed char buffer[Capacity];

        /// Hands over `text`; a null leaves the string as the native side made it, which is null. Throws when there is no
        /// memory for a long one.
        public void Set(string text)
        {
            if (text == null)
                return;
            if (text.Length <= Capacity)
            {
                fixed (char* from = text, to = buffer)
                    Copy((int*)from, (int*)to, (text.Length + 1) / 2);  // an odd one with the terminator that follows it
            }
            else
            {
                bstr = Marshal.StringToBSTR(text);
                if (bstr == IntPtr.Zero) // some runtimes do not throw
                    throw new OutOfMemoryException();
            }
            length = text.Length;
        }

        static void Copy(int* from, int* to, int count)
        {
            for (; count >= 4; count -= 4, from += 4, to += 4)
            {
                to[0] = from[0];
                to[1] = from[1];
                to[2] = from[2];
                to[3] = from[3];
            }
            for (; count > 0; count--)
                *to++ = *from++;
        }
    }
}
