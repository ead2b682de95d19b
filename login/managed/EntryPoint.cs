using System;
using System.Reflection;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace OrvelLoginClientCLR
{
    /// Tells the native side that the runtime's shutdown has begun, after which it must not be called any more.
    static unsafe class RuntimeEnd
    {
        /// 1 from the beginning of the shutdown. Never freed and not in the native library, which may have been unloaded by
        /// then; the same for every copy of that library in the process.
        public static readonly int* Flag = Watch();

        static int* Watch()
        {
            var flag = (int*)Marshal.AllocHGlobal(sizeof(int));
            *flag = 0;
            // Before a login manager is loaded, so that this handler runs before those of the manager.
            AppDomain.CurrentDomain.ProcessExit += (sender, e) => *flag = 1;
            return flag;
        }
    }

    /// The entry point for the native side. This class must not refer to types of the outside assemblies, because it runs
    /// before they can be found. It also avoids the class library, because the first use of each of its classes costs
    /// milliseconds of the host's first call.
    public static unsafe class EntryPoint
    {
        /// Version of the interface with the native side: `interfaceVersion` in login/boundary/Boundary.h.
        const int InterfaceVersion = 3;

        // Native code holds pointers to these delegates, so they must live as long as the process.
        static readonly NativeCall registerResolveHandler = Boundary.Guarded((m, a, b, r) => RegisterResolveHandler());
        static readonly NativeCall bindManagerMembers = Boundary.Guarded((count, a, b, table) => BindManagerMembers(table, (int)count));

        /// The handshake. `argument` holds the native side's version and the address of its `Handshake`, both decimal.
        /// Returns this side's version; if the two differ, writes nothing. The hosting interface requires this signature.
        public static int Enter(string argument)
        {
            int space = argument.IndexOf(' ');
            if (space < 0 || Number(argument, 0, space) != InterfaceVersion)
                return InterfaceVersion;
            var handshake = (Handshake*)Number(argument, space + 1, argument.Length);
            if (!handshake->Fits())
                return 0;
            handshake->registerResolveHandler = Marshal.GetFunctionPointerForDelegate(registerResolveHandler);
            handshake->bindManagerMembers = Marshal.GetFunctionPointerForDelegate(bindManagerMembers);
            handshake->runtimeEnding = RuntimeEnd.Flag;
            return InterfaceVersion;
        }

        /// Writes the path of this assembly's file: the runtime may have loaded it from elsewhere than the native side asked.
        /// `argument` holds a buffer's address and its size in code units, both decimal; a longer path is not written. Returns
        /// the length of the path. Native sides of other versions call this too, so it never changes.
        public static int Location(string argument)
        {
            int space = argument.IndexOf(' ');
            var buffer = (char*)Number(argument, 0, space);
            string path = Assembly.GetExecutingAssembly().Location;
            for (int i = 0; i < path.Length && (ulong)path.Length <= Number(argument, space + 1, argument.Length); i++)
                buffer[i] = path[i];
            return path.Length;
        }

        static ulong Number(string text, int from, int to)
        {
            ulong number = 0;
            for (int i = from; i < to; i++)
                number = number * 10 + (ulong)(text[i] - '0');
            return number;
        }

        static void RegisterResolveHandler()
        {
            AppDomain.CurrentDomain.AssemblyResolve += LoadLoginClientManaged;
        }

        static void BindManagerMembers(void* table, int count)
        {
            // Loaded by name before any of their types is used: a load by name can be tried again, whereas a reference that
            // could not be bound once stays broken, with a less helpful message.
            // By constants, because asking this assembly for its references would load much more of the class library.
            Assembly.Load("OrvelLoginClient, Version=" + ManagerVersion.Text + ", Culture=neutral, PublicKeyToken=null");
            Assembly.Load("loginManagerUtils, Version=" + ManagerVersion.Text + ", Culture=neutral, PublicKeyToken=null");
            Bind(table, count);
        }

        // A separate method, because compiling it makes the runtime load the outside types.
        [MethodImpl(MethodImplOptions.NoInlining)]
        static void Bind(void* table, int count)
        {
            ManagerMembers.Bind((ManagedMember*)table, count);
        }

        /// The resolve handler: looks for an assembly that the runtime cannot find, by its simple name, in the folder
        /// `OrvelLoginManagerClient` next to the library, and nowhere else. Returns null if it is not there.
        internal static Assembly LoadLoginClientManaged(object sender, ResolveEventArgs args)
        {
            string own = Assembly.GetExecutingAssembly().Location;
            string file = SimpleName(args.Name) + ".dll";
            // Other characters could lead out of the folder, or make the path functions throw into the caller's load.
            if (!IsFileName(file))
                return null;
            string path = own.Substring(0, own.LastIndexOf('\\')) + "\\OrvelLoginManagerClient\\" + file;
            return IsFile(path) ? Assembly.LoadFrom(path) : null;
        }

        // The part before the first comma. Only quoted or escaped names are left to the class library, which is slow to load.
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

        // Not File.Exists, which loads much more of the class library.
        [DllImport("kernel32", EntryPoint = "GetFileAttributesW", ExactSpelling = true, CharSet = CharSet.Unicode)]
        static extern uint GetFileAttributes(string path);
    }
}
