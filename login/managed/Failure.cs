using System;
using System.Reflection;
using System.Runtime.CompilerServices;
using System.Text;
using System.Threading;
using loginManagerUtils;

namespace OrvelLoginClientCLR
{
    partial struct Failure
    {
        /// Fills this from `e`; called in the handler that caught it. Never throws: an exception's own properties may throw,
        /// and memory may be exhausted, so each part is filled in if possible.
        public int Report(Exception e)
        {
            try
            {
                // Otherwise the runtime rethrows the abort at the end of every handler.
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
                // A different build of the manager's assemblies, which lacks the class or the field.
            }
            return 1;
        }

        // Compares names, because this also reports failed loads of the outside assemblies: a reference to the type would make
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

        // A separate method, because the runtime throws when it compiles it if the type or the field is missing.
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

    /// Reads an exception's HRESULT by reflection: Marshal.GetHRForException would leave a COM error object with the thread,
    /// and the property itself is protected in .NET Framework 4.0.
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

    /// Appends to an exception's message those of the exceptions that it wraps, each as " ---> Type: message". Managers that
    /// use tasks, reflection or static constructors wrap every failure in an exception that does not name the cause.
    static class Causes
    {
        const int MostCauses = 16;
        const int MostUnits = 4096; // for all causes together

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
