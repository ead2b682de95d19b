using System;
using System.Collections.Generic;
using OrvelLoginClient;

namespace OrvelLoginClientCLR
{
    /// The managers that native code holds. A handle is an index into an array; 0 means no manager.
    ///
    /// Not GCHandle, because resolving one takes half as long as a whole call.
    static class Managers
    {
        static readonly object changing = new object();
        static readonly List<int> free = new List<int>();
        static LoginManagerClient[] held = new LoginManagerClient[8];
        static int used = 1;

        public static LoginManagerClient At(IntPtr handle)
        {
            return held[(int)handle];
        }

        public static IntPtr Hold(LoginManagerClient manager)
        {
            lock (changing)
            {
                int index;
                if (free.Count > 0)
                {
                    index = free[free.Count - 1];
                    free.RemoveAt(free.Count - 1);
                }
                else
                    index = used++;
                if (index == held.Length)
                    Array.Resize(ref held, 2 * index);
                held[index] = manager;
                return (IntPtr)index;
            }
        }

        public static LoginManagerClient Release(IntPtr handle)
        {
            lock (changing)
            {
                LoginManagerClient manager = held[(int)handle];
                held[(int)handle] = null;
                free.Add((int)handle);
                return manager;
            }
        }
    }
}
