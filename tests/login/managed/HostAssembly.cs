namespace Host
{
    /// Managed code of the host's own: what runs in a process whose runtime was started before the library came.
    public static class HostAssembly
    {
        public static int Start(string ignored)
        {
            return 0;
        }
    }
}
