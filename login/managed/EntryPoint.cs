using System;
using System.Globalization;
using System.IO;
using System.Reflection;
using System.Runtime.InteropServices;

namespace OrvelLoginClientCLR
{
    /// Where the native side enters. Nothing in this class may name a type of the outside assemblies: it runs before they
    /// can be found.
    public static unsafe class EntryPoint
    {
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate int RegisterResolveHandlerCall(Failure* failure);

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate int BindManagerMembersCall(IntPtr* table, Failure* failure);

        // Native code holds their addresses, so they must live as long as the process.
        static readonly RegisterResolveHandlerCall registerResolveHandler = RegisterResolveHandler;
        static readonly BindManagerMembersCall bindManagerMembers = BindManagerMembers;

        /// Fills in the two-pointer table whose address is given as decimal text. The signature is the one that the hosting
        /// interface asks for.
        public static int Enter(string table)
        {
            var entries = (IntPtr*)long.Parse(table, CultureInfo.InvariantCulture);
            entries[0] = Marshal.GetFunctionPointerForDelegate(registerResolveHandler);
            entries[1] = Marshal.GetFunctionPointerForDelegate(bindManagerMembers);
            return 0;
        }

        static int RegisterResolveHandler(Failure* failure)
        {
            try
            {
                AppDomain.CurrentDomain.AssemblyResolve += LoadLoginClientManaged;
                return 0;
            }
            catch (Exception e)
            {
                return failure->Report(e);
            }
        }

        static int BindManagerMembers(IntPtr* table, Failure* failure)
        {
            try
            {
                // Before any type of theirs is touched: a reference that could not be bound stays broken, and says less about
                // why, but a load by name is tried again.
                foreach (AssemblyName name in Assembly.GetExecutingAssembly().GetReferencedAssemblies())
                    Assembly.Load(name);
                ManagerMembers.Bind(table);
                return 0;
            }
            catch (Exception e)
            {
                return failure->Report(e);
            }
        }

        /// Finds any assembly that the runtime cannot find in the folder `OrvelLoginManagerClient` next to the library,
        /// by its simple name alone, and nowhere else.
        static Assembly LoadLoginClientManaged(object sender, ResolveEventArgs args)
        {
            string folder = Path.GetDirectoryName(Assembly.GetExecutingAssembly().Location) + "\\OrvelLoginManagerClient";
            string file = new AssemblyName(args.Name).Name + ".dll";
            // A name that is no file name would lead elsewhere, or make the path functions throw into the caller's load.
            if (file.IndexOfAny(Path.GetInvalidFileNameChars()) >= 0)
                return null;
            string path = Path.Combine(folder, file);
            return File.Exists(path) ? Assembly.LoadFrom(path) : null;
        }
    }
}
