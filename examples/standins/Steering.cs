using System;
using System.Collections.Generic;
using System.Globalization;
using System.Reflection;
using System.Threading;
using loginManagerUtils;

namespace OrvelLoginClient
{
    class DerivedLoginManagerException : LoginManagerException
    {
        public DerivedLoginManagerException(loginManagerStatusCode status) : base(status, "on request")
        {
        }
    }

    class AbortingException : Exception
    {
        public AbortingException(string message) : base(message)
        {
        }

        public override string Message
        {
            get
            {
                Thread.CurrentThread.Abort();
                return base.Message;
            }
        }
    }

    /// Lets tests control the stand-in. The environment variable ORVEL_STANDIN, read whenever a manager is created, holds
    /// `member=command` pairs separated by ";". A member is one of the manager's members or of the record's fields, or
    /// "events" for how events are raised, or "exit", which makes the manager raise its sign-out event when the runtime shuts down.
    ///
    ///     null          returns null
    ///     echo          returns the argument (login: as userName and firstName)
    ///     status N      throws a LoginManagerException with that status; for 3 an exception derived from it
    ///     throw TYPE    throws an exception of that type in mscorlib or this assembly; the rest is its message, by default
    ///                   "on request"
    ///     wrapped       throws an exception that wraps two others, the first of which has a cause
    ///     chain N L     throws N exceptions, each wrapping the next, the last of another type, with messages of L owls (🦉)
    ///     abort         aborts the thread
    ///     divide        divides by zero, to test that the host's floating-point control does not make it raise an error
    ///     handlers      returns which handlers the manager was created with: "none", "login", "logout" or "login logout"
    ///     alive         returns the number of managers after a garbage collection
    ///     load NAME     loads an assembly by that display name; returns its location, or "not found"
    ///     collect       runs the garbage collector
    ///     wait NAME     waits until the event of that name is set
    ///     event         Dispose: raises the sign-out event
    ///     thread        raises events on a new thread
    ///     twice         raises each event twice
    ///     pool          raises events on a thread of the pool
    static class Steering
    {
        public static string Handlers; // of the manager created last
        public static int Alive;
        static Dictionary<string, string> commands; // null if there are none, so that benchmarks pay for no look-up

        public static void Read()
        {
            string text = Environment.GetEnvironmentVariable("ORVEL_STANDIN");
            commands = null;
            if (string.IsNullOrEmpty(text))
                return;
            var read = new Dictionary<string, string>();
            foreach (string pair in text.Split(';'))
            {
                int equals = pair.IndexOf('=');
                read[pair.Substring(0, equals)] = pair.Substring(equals + 1);
            }
            commands = read;
        }

        public static bool Steers(string member)
        {
            return commands != null && commands.ContainsKey(member);
        }

        public static bool Nulls(string member)
        {
            return Obey(member) == "null";
        }

        public static bool Echoes(string member)
        {
            return commands != null && Obey(member) == "echo";
        }

        public static string Text(string member, string fallback)
        {
            string command = Obey(member);
            if (command == null)
                return fallback;
            if (command == "null")
                return null;
            if (command == "alive")
            {
                GC.Collect();
                GC.WaitForPendingFinalizers();
                return Alive.ToString(CultureInfo.InvariantCulture);
            }
            if (command == "handlers")
                return Handlers;
            return command.StartsWith("load ", StringComparison.Ordinal) ? Load(command.Substring(5)) : fallback;
        }

        /// Carries out the member's command if it is to throw, wait or collect. Returns the command, or null if there is none.
        public static string Obey(string member)
        {
            string command;
            if (commands == null || !commands.TryGetValue(member, out command))
                return null;
            if (command.StartsWith("status ", StringComparison.Ordinal))
            {
                var status = (loginManagerStatusCode)int.Parse(command.Substring(7), CultureInfo.InvariantCulture);
                throw (int)status == 3 ? new DerivedLoginManagerException(status) : new LoginManagerException(status, "on request");
            }
            if (command.StartsWith("throw ", StringComparison.Ordinal))
            {
                string[] parts = command.Split(new[] { ' ' }, 3);
                throw (Exception)Activator.CreateInstance(Type.GetType(parts[1], true), parts.Length > 2 ? parts[2].Replace("\\0", "\0") : "on request");
            }
            if (command == "wrapped")
                throw new AggregateException("several",
                    new InvalidOperationException("first", new TimeoutException("its cause")), new ArgumentException("second"));
            if (command.StartsWith("chain ", StringComparison.Ordinal))
            {
                string[] numbers = command.Split(' ');
                var message = new string('m', int.Parse(numbers[2], CultureInfo.InvariantCulture)).Replace("m", "🦉");
                Exception chain = new InvalidOperationException(message);
                for (int i = int.Parse(numbers[1], CultureInfo.InvariantCulture); i > 1; i--)
                    chain = new TimeoutException(message, chain);
                throw chain;
            }
            if (command == "divide" && double.IsNaN(1.0 / (command.Length - 6.0)))
                throw new NotFiniteNumberException();
            if (command == "abort")
                Thread.CurrentThread.Abort();
            if (command.StartsWith("wait ", StringComparison.Ordinal))
            {
                using (var gate = EventWaitHandle.OpenExisting(command.Substring(5)))
                    gate.WaitOne();
            }
            if (command == "collect")
            {
                GC.Collect();
                GC.WaitForPendingFinalizers();
            }
            return command;
        }

        public static void Raise(Action handler)
        {
            string command = Obey("events");
            if (command == "thread")
            {
                var thread = new Thread(() => handler());
                thread.Start();
                thread.Join();
            }
            else if (command == "pool")
            {
                using (var done = new ManualResetEvent(false))
                {
                    ThreadPool.QueueUserWorkItem(state => { handler(); done.Set(); });
                    done.WaitOne();
                }
            }
            else
                handler();
            if (command == "twice")
                handler();
        }

        static string Load(string name)
        {
            try
            {
                return Assembly.Load(name).Location;
            }
            catch (System.IO.FileNotFoundException)
            {
                return "not found";
            }
        }
    }
}
