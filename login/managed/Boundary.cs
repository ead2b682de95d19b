using System;
using System.Runtime.InteropServices;
using System.Threading;
using OrvelLoginClient;

// The structures that the native side and this part exchange. Native half: login/boundary/Boundary.h, with the same fields in
// the same order; strings: NativeString.cs.
namespace OrvelLoginClientCLR
{
    /// The exception with which a member ended; Failure.cs fills it in.
    [StructLayout(LayoutKind.Sequential)]
    partial struct Failure
    {
        public int isManagerException;
        public int status;
        public int hresult;
        public NativeString typeName;
        public NativeString message;
    }

    /// A response record.
    [StructLayout(LayoutKind.Sequential)]
    struct Record
    {
        public int present;
        public NativeString statusDescription;
        public NativeString userName;
        public NativeString firstName;
        public NativeString lastName;
        public NativeString rowId;
        public NativeString aliasName;
        public NativeString domainName;

        public void Fill(LoginResponse response)
        {
            if (response == null)
                return;
            present = 1;
            statusDescription.Set(response.statusDescription);
            userName.Set(response.userName);
            firstName.Set(response.firstName);
            lastName.Set(response.lastName);
            rowId.Set(response.rowId);
            aliasName.Set(response.aliasName);
            domainName.Set(response.domainName);
        }
    }

    /// The arguments for creating a manager, and the result.
    [StructLayout(LayoutKind.Sequential)]
    struct Creation
    {
        public IntPtr loginHandler;
        public IntPtr logoutHandler;
        public int language;
        public IntPtr manager;
    }

    /// A string from the native side.
    [StructLayout(LayoutKind.Sequential)]
    unsafe struct StringArgument
    {
        public char* chars;
        public int length;

        public override string ToString()
        {
            return new string(chars, 0, length);
        }
    }

    /// A row of the native side's table of members. The rules are the native side's.
    [StructLayout(LayoutKind.Sequential)]
    unsafe struct ManagedMember
    {
        public char* name;
        public int exceptionRule;
        public int nullRule;
        public int offlineRule;
        public IntPtr call;
    }

    /// The sizes that the native side uses, and the calls that it gets.
    [StructLayout(LayoutKind.Sequential)]
    unsafe struct Handshake
    {
        public int handshakeSize;
        public int failureSize;
        public int recordSize;
        public int creationSize;
        public int stringSize;
        public int memberSize;
        public IntPtr registerResolveHandler;
        public IntPtr bindManagerMembers;
        public int* runtimeEnding;

        public bool Fits()
        {
            return handshakeSize == sizeof(Handshake) && failureSize == sizeof(Failure) && recordSize == sizeof(Record) &&
                creationSize == sizeof(Creation) && stringSize == sizeof(StringArgument) && memberSize == sizeof(ManagedMember);
        }
    }

    /// The signature of every call from the native side: `ManagedCall`.
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    unsafe delegate int NativeCall(IntPtr manager, StringArgument* first, StringArgument* second, void* result, Failure* failure);

    /// The implementation of a call. It may throw.
    unsafe delegate void Body(IntPtr manager, StringArgument* first, StringArgument* second, void* result);

    static unsafe class Boundary
    {
        /// Wraps `body` for native code: catches everything, because an exception that escapes into native code ends the
        /// process. Aborts of the thread are caught as well, except one that arrives outside the try.
        ///
        /// Refer to outside types and members only inside a body. If one is missing, the runtime throws when it compiles
        /// the body, which happens inside the try.
        public static NativeCall Guarded(Body body)
        {
            return (manager, first, second, result, failure) =>
            {
                int ended = 1;
                try
                {
                    try
                    {
                        body(manager, first, second, result);
                        ended = 0;
                    }
                    catch (Exception e)
                    {
                        // In a finally block, because the runtime holds aborts by other threads back there.
                        try
                        {
                        }
                        finally
                        {
                            failure->Report(e);
                        }
                    }
                }
                catch (ThreadAbortException)
                {
                    Aborts.Reset(); // it was held back
                }
                return ended;
            };
        }
    }
}
