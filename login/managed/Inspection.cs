using System;
using System.Collections.Generic;
using System.Globalization;
using System.Reflection;
using System.Runtime.InteropServices;

namespace OrvelLoginClientCLR
{
    /// Describes the outside assemblies for the diagnostics tool, without running any of their code. Refers to their types by
    /// name only, so that it can report which ones are missing.
    public static unsafe class Inspection
    {
        const string Client = "OrvelLoginClient";
        const string Utils = "loginManagerUtils";

        /// What the library uses besides the manager's members: assembly, type, and field in the format of Signature().
        static readonly string[,] fields =
        {
            { Client, "LoginResponse", "String statusDescription" },
            { Client, "LoginResponse", "String userName" },
            { Client, "LoginResponse", "String firstName" },
            { Client, "LoginResponse", "String lastName" },
            { Client, "LoginResponse", "String rowId" },
            { Client, "LoginResponse", "String aliasName" },
            { Client, "LoginResponse", "String domainName" },
            { Utils, "LoginManagerException", "loginManagerStatusCode status" },
        };

        /// Writes the result into a buffer, as lines of assembly, keyword and value, separated by tabs. The keywords are
        /// "name", "version" and "file" of an assembly that could be opened; "lacks", a member that is missing; "failure", the
        /// exception for an assembly that cannot be opened or read. The argument holds the buffer's address and its size in
        /// UTF-16 code units, separated by a comma.
        public static int Inspect(string buffer)
        {
            string[] parts = buffer.Split(',');
            var lines = new List<string>();
            AppDomain.CurrentDomain.AssemblyResolve += EntryPoint.LoadLoginClientManaged;
            foreach (string assembly in new[] { Client, Utils })
            {
                try
                {
                    Inspect(assembly, lines);
                }
                catch (Exception e)
                {
                    lines.Add(assembly + "\tfailure\t" + e.GetType().FullName + ": " + e.Message.Replace('\n', ' ').Replace('\r', ' '));
                }
            }
            char[] text = string.Join("\n", lines).ToCharArray();
            // Through a pointer: in a 32-bit process, IntPtr's own conversions refuse addresses above 2 GB.
            var address = (void*)ulong.Parse(parts[0], CultureInfo.InvariantCulture);
            Marshal.Copy(text, 0, (IntPtr)address, Math.Min(text.Length, int.Parse(parts[1], CultureInfo.InvariantCulture) - 1));
            return 0;
        }

        static void Inspect(string wanted, List<string> lines)
        {
            Assembly assembly = null;
            // By the full name in this assembly's references, as the runtime would load it.
            foreach (AssemblyName reference in Assembly.GetExecutingAssembly().GetReferencedAssemblies())
                if (reference.Name == wanted)
                    assembly = Assembly.Load(reference);
            lines.Add(wanted + "\tname\t" + assembly.GetName().Name);
            lines.Add(wanted + "\tversion\t" + assembly.GetName().Version);
            lines.Add(wanted + "\tfile\t" + assembly.Location);
            if (wanted == Client)
            {
                foreach (string member in ManagerMembers.Signatures())
                    Check(assembly, wanted, "LoginManagerClient", member, lines);
            }
            for (int i = 0; i < fields.GetLength(0); i++)
            {
                if (fields[i, 0] == wanted)
                    Check(assembly, wanted, fields[i, 1], fields[i, 2], lines);
            }
        }

        static void Check(Assembly assembly, string wanted, string type, string member, List<string> lines)
        {
            Type found = assembly.GetType(wanted + "." + type);
            if (found == null || !Signatures(found).Contains(member))
                lines.Add(wanted + "\tlacks\t" + type + ": " + member);
        }

        static HashSet<string> Signatures(Type type)
        {
            var signatures = new HashSet<string>();
            foreach (MemberInfo member in type.GetMembers(
                BindingFlags.Public | BindingFlags.Instance | BindingFlags.Static | BindingFlags.FlattenHierarchy))
            {
                var field = member as FieldInfo;
                var method = member as MethodBase;
                if (field != null)
                    signatures.Add(Signature(field.IsStatic, field.FieldType.Name, field.Name));
                else if (method != null)
                    signatures.Add(Signature(method));
            }
            return signatures;
        }

        static string Signature(MethodBase method)
        {
            var function = method as MethodInfo; // null for a constructor
            var parameters = new List<string>();
            foreach (ParameterInfo parameter in method.GetParameters())
                parameters.Add(parameter.ParameterType.Name);
            return Signature(
                method.IsStatic,
                function == null ? "Void" : function.ReturnType.Name,
                method.Name + "(" + string.Join(", ", parameters) + ")");
        }

        static string Signature(bool isStatic, string type, string rest)
        {
            return (isStatic ? "static " : "") + type + " " + rest;
        }
    }
}
