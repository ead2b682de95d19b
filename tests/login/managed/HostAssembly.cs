namespace Host
{
    /// The host's own managed code, which starts the runtime before the library is used.
    public static class HostAssembly
    {
        public static int Start(string ignored)
        {
            return 0;
        }
    }
}
