using System;
using System.Reflection;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace OrvelLoginClientCLR
{
    /// What the native side says of itself, and what it gets. Layout: `Handshake` in login/ManagedPart.cpp.
    [StructLayout(LayoutKind.Sequential)]
    unsafe struct Handshake
    {
        public int handshakeSize;
        public int failureSize;
        public int recordSize;
        public int creationSize;
        public int textSize;
        public int memberSize;
        public IntPtr registerResolveHandler;
        public IntPtr bindManagerMembers;

        public bool Fits()
        {
            return handshakeSize == sizeof(Handshake) && failureSize == sizeof(Failure) && recordSize == sizeof(Record) &&
                creationSize == sizeof(Creation) && textSize == sizeof(Text) && memberSize == sizeof(BoundMember);
        }
    }

    /// Where the native side enters. Nothing in this class may name a type of the outside assemblies: it runs before they
    /// can be found. And it is sparing with the class library, because each part of it that is used for the first time takes
    /// milliseconds of the host's first call.
    public static unsafe class EntryPoint
    {
        /// Number of the agreement with the native side: `agreementVersion` in login/ManagedPart.h.
        const int AgreementVersion = 2;

        // Native code holds their addresses, so they must live as long as the process.
        static readonly NativeCall registerResolveHandler = Boundary.Guarded((m, a, b, r) => RegisterResolveHandler());
        static readonly NativeCall bindManagerMembers = Boundary.Guarded((count, a, b, table) => BindManagerMembers(table, (int)count));

        /// The handshake. `argument` holds the native side's agreement version and the address of its `Handshake`, both
        /// decimal. Returns this side's version; unless the two are one, nothing is written. The signature is the one that
        /// the hosting interface asks for.
        public static int Enter(string argument)
        {
            int space = argument.IndexOf(' ');
            if (space < 0 || Number(argument, 0, space) != AgreementVersion)
                return AgreementVersion;
            var handshake = (Handshake*)Number(argument, space + 1, argument.Length);
            if (!handshake->Fits())
                return 0;
            handshake->registerResolveHandler = Marshal.GetFunctionPointerForDelegate(registerResolveHandler);
            handshake->bindManagerMembers = Marshal.GetFunctionPointerForDelegate(bindManagerMembers);
            return AgreementVersion;
        }

        static uint Number(string text, int from, int to)
        {
            uint number = 0;
            for (int i = from; i < to; i++)
                number = number * 10 + text[i] - '0';
            return number;
        }

        static void RegisterResolveHandler()
        {
            AppDomain.CurrentDomain.AssemblyResolve += LoadLoginClientManaged;
        }

        static void BindManagerMembers(void* table, int count)
        {
            // Before any type of theirs is touched: a reference that could not be bound stays broken, and says less about
            // why, but a load by name can be tried again.
            Assembly.Load("OrvelLoginClient, Version=34.0.0.5070, Culture=neutral, PublicKeyToken=null");
            Assembly.Load("loginManagerUtils, Version=34.0.0.5070, Culture=neutral, PublicKeyToken=null");
            Bind(table, count);
        }

        // A method of its own, compiled when it is called: compiling it makes the runtime look at the outside types.
        [MethodImpl(MethodImplOptions.NoInlining)]
        static void Bind(void* table, int count)
        {
            ManagerMembers.Bind((BoundMember*)table, count);
        }

        /// Finds any assembly that the runtime cannot find in the folder `OrvelLoginManagerClient` next to the library,
        /// by its simple name alone, and nowhere else.
        internal static Assembly LoadLoginClientManaged(object sender, ResolveEventArgs args)
        {
            string own = Assembly.GetExecutingAssembly().Location;
            string file = SimpleName(args.Name) + ".dll";
            // A name that is no file name would lead elsewhere, or make the path functions throw into the caller's load.
            if (!IsFileName(file))
                return null;
            string path = own.Substring(0, own.LastIndexOf('\\')) + "\\OrvelLoginManagerClient\\" + file;
            return IsFile(path) ? Assembly.LoadFrom(path) : null;
        }

        // The part before the first comma, unless the name is quoted or escaped; that is for the class library.
        static string SimpleName(string displayName)
        {
            int end = displayName.Length;
            for (int i = displayName.Length - 1; i >= 0; i--)
            {
                char c = displayName[i];
                if (c == '\\' || c == '"' || c == '\'')
                    return new AssemblyName(displayName).Name;
                if (c == ',')
                    end = i;
            }
            return displayName.Substring(0, end).Trim();
        }

        static bool IsFileName(string name)
        {
            foreach (char c in name)
            {
                if (c < ' ' || c == '"' || c == '<' || c == '>' || c == '|' || c == ':' || c == '*' || c == '?' || c == '\\' || c == '/')
                    return false;
            }
            return true;
        }

        static bool IsFile(string path)
        {
            const uint InvalidFileAttributes = 0xFFFFFFFF;
            const uint Directory = 0x10;
            uint attributes = GetFileAttributes(path);
            return attributes != InvalidFileAttributes && (attributes & Directory) == 0;
        }

        // File.Exists asks the same, by way of much more of the class library.
        [DllImport("kernel32", EntryPoint = "GetFileAttributesW", ExactSpelling = true, CharSet = CharSet.Unicode)]
        static extern uint GetFileAttributes(string path);
    }
}
