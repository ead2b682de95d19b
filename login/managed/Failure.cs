using System;
using System.Reflection;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;
using System.Text;
using System.Threading;
using loginManagerUtils;

namespace OrvelLoginClientCLR
{
    /// How a member ended when it did not return. Layout: `ManagedFailure` in login/ManagedPart.h.
    [StructLayout(LayoutKind.Sequential)]
    struct Failure
    {
        public int isManagerException;
        public int status;
        public int hresult;
        public NativeString typeName;
        public NativeString message;

        /// Takes down `e`; called in the handler that caught it. Lets nothing out, and takes down as much as can be had: an
        /// exception may throw when it is asked for its message, and memory may be exhausted.
        public int Report(Exception e)
        {
            try
            {
                // Otherwise the runtime raises it again at the end of each handler, for ever.
                if ((Thread.CurrentThread.ThreadState & ThreadState.AbortRequested) != 0)
                    Thread.ResetAbort();
            }
            catch (Exception)
            {
            }
            try
            {
                hresult = HResult.Of(e);
                typeName.Set(e.GetType().FullName);
                message.Set(Causes.MessageOf(e));
            }
            catch (Exception)
            {
            }
            try
            {
                if (IsManagers(e.GetType()))
                    TakeStatus(e);
            }
            catch (Exception)
            {
                // The manager's types are of another make: without that class, or without that field.
            }
            return 1;
        }

        // By name, because a failed load of the outside assemblies is reported here too: naming the type itself would make
        // the runtime bind to an assembly that it cannot find, and remember the failure.
        static bool IsManagers(Type type)
        {
            for (; type != null; type = type.BaseType)
            {
                if (type.FullName == "loginManagerUtils.LoginManagerException")
                    return true;
            }
            return false;
        }

        // A method of its own: where it names a type or a field that is missing, the runtime throws when it compiles it.
        [MethodImpl(MethodImplOptions.NoInlining)]
        void TakeStatus(Exception e)
        {
            var own = e as LoginManagerException;
            if (own != null)
            {
                status = (int)own.status;
                isManagerException = 1;
            }
        }
    }

    /// An exception's HRESULT. Not by Marshal.GetHRForException, which leaves an error object of COM's with the thread; and
    /// not by the property itself, which the first .NET Framework 4 has for derived classes only.
    static class HResult
    {
        static readonly Func<Exception, int> getter = (Func<Exception, int>)Delegate.CreateDelegate(
            typeof(Func<Exception, int>),
            typeof(Exception).GetProperty("HResult", BindingFlags.Instance | BindingFlags.Public | BindingFlags.NonPublic)
                .GetGetMethod(true));

        public static int Of(Exception e)
        {
            return getter(e);
        }
    }

    /// The message of an exception with those that it wraps, each as " ---> Type: message". Managers built on tasks,
    /// reflection or static state wrap every failure, and the outermost exception then says nothing of the cause.
    static class Causes
    {
        const int MostCauses = 16;
        const int MostUnits = 4096; // of all causes together

        public static string MessageOf(Exception e)
        {
            var chain = new StringBuilder(Message(e));
            int units = chain.Length + MostUnits;
            int causes = 0;
            Append(e, chain, units, ref causes);
            if (chain.Length > units)
            {
                chain.Length = char.IsHighSurrogate(chain[units - 1]) ? units - 1 : units;
                chain.Append("...");
            }
            return chain.ToString();
        }

        static void Append(Exception e, StringBuilder chain, int units, ref int causes)
        {
            var several = e as AggregateException;
            if (several != null)
            {
                foreach (Exception inner in several.InnerExceptions)
                    AppendOne(inner, chain, units, ref causes);
            }
            else if (e.InnerException != null)
                AppendOne(e.InnerException, chain, units, ref causes);
        }

        static void AppendOne(Exception inner, StringBuilder chain, int units, ref int causes)
        {
            if (causes > MostCauses || chain.Length > units)
                return;
            causes++;
            if (causes > MostCauses)
            {
                chain.Append(" ---> ...");
                return;
            }
            chain.Append(" ---> ").Append(inner.GetType().FullName).Append(": ").Append(Message(inner));
            Append(inner, chain, units, ref causes);
        }

        static string Message(Exception e)
        {
            try
            {
                return e.Message ?? "";
            }
            catch (Exception)
            {
                return "";
            }
        }
    }
}
