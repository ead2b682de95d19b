using System;
using System.Collections.Generic;
using OrvelLoginClient;

namespace OrvelLoginClientCLR
{
    /// The managers that native code holds. A handle is an index; 0 is no manager.
    ///
    /// A plain array, because looking an object up by GCHandle takes as long as half a call.
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

        public static void Release(IntPtr handle)
        {
            lock (changing)
            {
                held[(int)handle] = null;
                free.Add((int)handle);
            }
        }
    }
}
