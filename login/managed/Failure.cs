using System;
using System.Collections.Generic;
using System.Reflection;
using System.Runtime.CompilerServices;
using System.Text;
using System.Threading;
using loginManagerUtils;

namespace OrvelLoginClientCLR
{
    partial struct Failure
    {
        /// Fills this from `e`; called in a handler. Never throws: an exception's own properties may throw or abort the thread,
        /// and memory may be exhausted, so each part is filled in if possible.
        public void Report(Exception e)
        {
            Aborts.Reset();
            try
            {
                typeName.Set(e.GetType().FullName);
            }
            catch (Exception)
            {
                Aborts.Reset();
            }
            try
            {
                message.Set(Causes.MessageOf(e));
            }
            catch (Exception)
            {
                Aborts.Reset();
            }
            try
            {
                hresult = HResult.Of(e);
            }
            catch (Exception)
            {
                Aborts.Reset();
            }
            try
            {
                if (IsManagerException(e.GetType()))
                    TakeStatus(e);
            }
            catch (Exception)
            {
                // A different build of the manager's assemblies, which lacks the class or the field.
                Aborts.Reset();
            }
            Aborts.Reset();
        }

        // Compares names, because this also reports failed loads of the outside assemblies: a reference to the type would make
        // the runtime bind to an assembly that it cannot find, and remember the failure.
        static bool IsManagerException(Type type)
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

    static class Aborts
    {
        /// Ends a requested abort of this thread. Otherwise the runtime would rethrow it at the end of every handler.
        public static void Reset()
        {
            try
            {
                if ((Thread.CurrentThread.ThreadState & ThreadState.AbortRequested) != 0)
                    Thread.ResetAbort();
            }
            catch (Exception)
            {
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
        // More than any real chain has, and still a message that a log and a message box can show. If there is more, the
        // middle is left out, because the innermost cause is usually the one to fix.
        const int MostCauses = 16;
        const int MostCodeUnits = 4096; // for all causes together

        public static string MessageOf(Exception e)
        {
            List<Exception> causes = Of(e);
            int surplus = causes.Count - MostCauses;
            if (surplus > 0)
                causes.RemoveRange(MostCauses / 2, surplus);
            var descriptions = new List<string>();
            int codeUnits = 0;
            foreach (Exception cause in causes)
            {
                string description = cause.GetType().FullName + ": " + Message(cause);
                descriptions.Add(description);
                codeUnits += Math.Min(description.Length, MostCodeUnits + 1); // no overflow
            }
            var chain = new StringBuilder(Message(e));
            for (int i = 0; i < descriptions.Count; i++)
            {
                if (surplus > 0 && i == MostCauses / 2)
                    chain.Append(" ---> ...");
                string description = descriptions[i];
                chain.Append(" ---> ").Append(codeUnits > MostCodeUnits ? Truncated(description, MostCodeUnits / descriptions.Count) : description);
            }
            return chain.ToString();
        }

        // All causes, outermost first. Without recursion, because a chain may be longer than the stack is deep.
        static List<Exception> Of(Exception e)
        {
            var causes = new List<Exception>();
            var open = new List<Exception>();
            for (;;)
            {
                var several = e as AggregateException;
                if (several != null)
                {
                    for (int i = several.InnerExceptions.Count - 1; i >= 0; i--)
                        open.Add(several.InnerExceptions[i]);
                }
                else if (e.InnerException != null)
                    open.Add(e.InnerException);
                if (open.Count == 0)
                    return causes;
                e = open[open.Count - 1];
                open.RemoveAt(open.Count - 1);
                causes.Add(e);
            }
        }

        static string Truncated(string description, int codeUnits)
        {
            if (description.Length <= codeUnits)
                return description;
            return description.Substring(0, char.IsHighSurrogate(description[codeUnits - 1]) ? codeUnits - 1 : codeUnits) + "...";
        }

        static string Message(Exception e)
        {
            try
            {
                return e.Message ?? "";
            }
            catch (Exception)
            {
                Aborts.Reset();
                return "";
            }
        }
    }
}
