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

    /// The one shape of every call from the native side: `ManagedCall` in login/ManagedPart.h.
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    unsafe delegate int NativeCall(IntPtr manager, Text* first, Text* second, void* result, Failure* failure);

    /// What a call does. It may throw.
    unsafe delegate void Body(IntPtr manager, Text* first, Text* second, void* result);

    static unsafe class Boundary
    {
        /// `body` as native code can call it. An exception that got out into native code would end the process.
        ///
        /// Whatever names an outside type or member must stand in a body: if the type or member is missing, the runtime
        /// throws when it compiles the body, which is inside the try.
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
