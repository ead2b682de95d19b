using System;
using System.Runtime.InteropServices;

namespace OrvelLoginClientCLR
{
    /// Text from the native side. Layout: `TextArgument` in login/ManagedPart.h.
    [StructLayout(LayoutKind.Sequential)]
    unsafe struct Text
    {
        public char* chars;
        public int length;

        public override string ToString()
        {
            return new string(chars, 0, length);
        }
    }

    /// The signature of every call from the native side: `ManagedCall` in login/ManagedPart.h.
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    unsafe delegate int NativeCall(IntPtr manager, Text* first, Text* second, void* result, Failure* failure);

    /// The implementation of a call. It may throw.
    unsafe delegate void Body(IntPtr manager, Text* first, Text* second, void* result);

    static unsafe class Boundary
    {
        /// Wraps `body` for native code: catches everything, because an exception that escapes into native code ends the
        /// process.
        ///
        /// Refer to outside types and members only inside a body. If one is missing, the runtime throws when it compiles
        /// the body, which happens inside the try.
        public static NativeCall Guarded(Body body)
        {
            return (manager, first, second, result, failure) =>
            {
                try
                {
                    body(manager, first, second, result);
                    return 0;
                }
                catch (Exception e)
                {
                    return failure->Report(e);
                }
            };
        }
    }
}
