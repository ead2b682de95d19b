using System;
using System.Runtime.InteropServices;

namespace OrvelLoginClientCLR
{
    /// A string for the native side, which frees it. Layout: `ManagedString` in login/boundary/ManagedString.h.
    [StructLayout(LayoutKind.Sequential)]
    unsafe struct NativeString
    {
        const int Capacity = 256;

        IntPtr bstr;
        int length;
        fixed char buffer[Capacity];

        /// Stores `text`. For a null it does nothing, because the native side initialises the string as null. Throws if there
        /// is no memory for a long text.
        public void Set(string text)
        {
            if (text == null)
                return;
            if (text.Length < Capacity) // the native side adds a terminator
            {
                fixed (char* from = text, to = buffer)
                    Copy((int*)from, (int*)to, (text.Length + 1) / 2);  // two units at a time; the last may be the terminator
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
