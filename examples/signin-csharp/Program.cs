using System;
using System.Text;
using System.Threading;
using Orvel.Login;

/// Signs a user in and out through the library, and prints all that it returns.
static class Program
{
    static void Show(string name, string value)
    {
        Console.WriteLine("  {0,-18} {1}", name, value.Length == 0 ? "(empty)" : value);
    }

    static void Show(LoginResponse user)
    {
        Show("statusDescription", user.StatusDescription);
        Show("userName", user.UserName);
        Show("firstName", user.FirstName);
        Show("lastName", user.LastName);
        Show("rowId", user.RowId);
        Show("aliasName", user.AliasName);
        Show("domainName", user.DomainName);
    }

    // A callback may be called on any thread, so keep it short. It must not let an exception escape.
    static void SignedIn()
    {
        Console.WriteLine("  [sign-in callback, thread {0}]", Thread.CurrentThread.ManagedThreadId);
    }

    static void SignedOut()
    {
        Console.WriteLine("  [sign-out callback, thread {0}]", Thread.CurrentThread.ManagedThreadId);
    }

    static void Run()
    {
        Console.WriteLine("Main thread {0}", Thread.CurrentThread.ManagedThreadId);
        using (var client = new LoginManagerClient(SignedIn, SignedOut))
        {
            Console.WriteLine("\nA wrong password:");
            try
            {
                client.Login("ada@example.com", "difference engine");
            }
            catch (LoginManagerException refused)
            {
                Console.WriteLine("  refused: code {0}", refused.Code);
            }

            Console.WriteLine("\nThe right one:");
            Show(client.Login("ada@example.com", "analytical engine"));

            Console.WriteLine("\nWhat the sign-in established:");
            Show("access token", client.GetAccessToken());
            Show("tenant", client.GetTenantName());
            Show("tenant id", client.GetTenantId());
            Show("tenant ids", client.GetTenantIds());
            Show("CAS cookie", client.GetCasCookie());
            Show("platform URL", client.GetPlatformUrl());
            Show("registry URL", client.GetRegistryUrl());
            Show("passport URL", client.GetPassportUrl());
            Show("applications URL", client.GetMyAppsUrl());
            Show("Kelpa URL", client.GetKelpaUrl());
            Show("space URL", client.GetSpaceUrl());
            Show("access URL", client.FormatAccessUrl("https://space.example.com/plan"));
            Show("login ticket", client.GetLoginTicket(client.GetSpaceUrl()));

            Console.WriteLine("\nThe consumer platform:");
            client.DunmoreLoginBrowser("https://dunmore.example.com", "signin-example");
            Show("token", client.GetDnmAccessToken());
            Show("expired", client.IsDunmorePlatformTokenExpired(client.GetDnmAccessToken()) ? "yes" : "no");
            client.StopDnmListener();

            Console.WriteLine("\nWhile offline, getters return empty strings without calling the manager:");
            client.OfflineMode = true;
            Show("access token", client.GetAccessToken());
            Show("platform URL", client.GetPlatformUrl());
            client.OfflineMode = false;

            Console.WriteLine("\nAnother user, whose account has no domain:");
            Show(client.Login("zoe@example.com", "κωδικός"));

            Console.WriteLine("\nSigning out:");
            client.Logout();
            try
            {
                client.GetLoggedInUser(false);
            }
            catch (LoginManagerException nobody)
            {
                Console.WriteLine("  nobody is signed in: code {0}", nobody.Code);
            }
        }
    }

    static int Main()
    {
        Console.OutputEncoding = new UTF8Encoding(false);
        try
        {
            Run();
            return 0;
        }
        catch (LoginRuntimeException failed)
        {
            Console.Error.WriteLine(failed.Message);
            // A managed exception; the message of any other failure has the number already.
            if (failed.TypeName.Length != 0)
                Console.Error.WriteLine("  HRESULT 0x{0:X8}", failed.HResult);
            return 1;
        }
        catch (Exception failed)
        {
            Console.Error.WriteLine(failed.Message);
            return 1;
        }
    }
}
