using System;
using System.Globalization;
using System.Reflection;

[assembly: AssemblyFileVersion("0.9.8.7")]

namespace OrvelLoginClientCLR
{
    /// A managed part of another version: like version 1.0, which expects only an address and writes to it.
    public static unsafe class EntryPoint
    {
        public static int Enter(string argument)
        {
            ((IntPtr*)long.Parse(argument, CultureInfo.InvariantCulture))[0] = IntPtr.Zero;
            return 0;
        }
    }
}
