using System;
using System.Globalization;
using System.Runtime.InteropServices;
using loginManagerUtils;
using OrvelLoginClient;

/// The baselines for the library's members: the same members of the same manager, called through bare function pointers
/// with the same string conversions, and from managed code.
namespace Bench
{
public static unsafe class LoginBench
{
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    delegate IntPtr TextCall();

    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    delegate IntPtr TextOfTextCall(char* text, int length);

    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    delegate int TestCall(char* text, int length);

    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    delegate void Loop(int calls);

    static LoginManagerClient manager;
    static string url;
    static string token;

    static readonly Delegate[] entries =
    {
        new TextCall(() => Marshal.StringToBSTR(manager.getAccessToken())),
        new TextOfTextCall((text, length) => Marshal.StringToBSTR(manager.formatAccessURL(new string(text, 0, length)))),
        new TestCall((text, length) => LoginManagerClient.isDunmorePlatformTokenExpired(new string(text, 0, length)) ? 1 : 0),
        new Loop(calls => { for (int i = 0; i < calls; i++) manager.getAccessToken(); }),
        new Loop(calls => { for (int i = 0; i < calls; i++) manager.formatAccessURL(url); }),
        new Loop(calls => { for (int i = 0; i < calls; i++) LoginManagerClient.isDunmorePlatformTokenExpired(token); }),
    };

    public static int Enter(string table)
    {
        manager = new LoginManagerClient(null, null, langCode.English);
        manager.login("ada@example.com", "analytical engine");
        LoginManagerClient.DunmoreLoginBrowser("https://dunmore.example.com", "bench");
        token = LoginManagerClient.getDNMAccessToken();
        url = new string('u', 100);
        var addresses = (IntPtr*)long.Parse(table, CultureInfo.InvariantCulture);
        for (int i = 0; i < entries.Length; i++)
            addresses[i] = Marshal.GetFunctionPointerForDelegate(entries[i]);
        return 0;
    }

    /// Collects garbage, so that the memory in use can be compared.
    public static int Collect(string ignored)
    {
        GC.Collect();
        return 0;
    }
}

/// For measuring the start of the runtime alone; uses no other assembly.
public static class Runtime
{
    public static int Start(string ignored)
    {
        return 0;
    }
}
}
