// Answers whether the managed runtime in the Wine prefix is the one wanted: win32 class library, texts in place.
using System;
using System.IO;

static class Check
{
    static int Main()
    {
        if (Path.DirectorySeparatorChar != '\\' || !File.Exists("c:\\windows\\explorer.exe"))
            return 1;
        if (typeof(object).Assembly.FullName != "mscorlib, Version=4.0.0.0, Culture=neutral, PublicKeyToken=b77a5c561934e089")
            return 2;
        Span<byte> bytes = new byte[40];
        bytes.Fill(3);
        try
        {
            int.Parse("99999999999");
        }
        catch (OverflowException e)
        {
            return e.Message == "Value was either too large or too small for an Int32." ? 0 : 3;
        }
        return 4;
    }
}
