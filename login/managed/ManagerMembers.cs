using System;
using System.Runtime.InteropServices;
using loginManagerUtils;
using OrvelLoginClient;

namespace OrvelLoginClientCLR
{
    /// A response record as the native side reads it. Layout: `ManagedRecord` in login/ManagedPart.h.
    [StructLayout(LayoutKind.Sequential)]
    struct Record
    {
        public int present;
        public IntPtr statusDescription;
        public IntPtr userName;
        public IntPtr firstName;
        public IntPtr lastName;
        public IntPtr rowId;
        public IntPtr aliasName;
        public IntPtr domainName;

        public void Fill(LoginResponse response)
        {
            if (response == null)
                return;
            present = 1;
            statusDescription = Marshal.StringToBSTR(response.statusDescription);
            userName = Marshal.StringToBSTR(response.userName);
            firstName = Marshal.StringToBSTR(response.firstName);
            lastName = Marshal.StringToBSTR(response.lastName);
            rowId = Marshal.StringToBSTR(response.rowId);
            aliasName = Marshal.StringToBSTR(response.aliasName);
            domainName = Marshal.StringToBSTR(response.domainName);
        }
    }

    /// Text from the native side. Layout: `TextArgument` in login/ManagedPart.h.
    [StructLayout(LayoutKind.Sequential)]
    unsafe struct Text
    {
        public char* chars;
        public int length;

        public override string ToString()
        {
            return new string(chars, 0, length);
        }
    }

    /// The members of the outside login manager, callable from native code: each calls one member and reports the outcome
    /// as data. What the outcomes mean is decided on the native side.
    static unsafe class ManagerMembers
    {
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate void EventHandler();

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate int CreateCall(IntPtr login, IntPtr logout, int language, IntPtr* manager, Failure* failure);

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate int PlainCall(IntPtr manager, Failure* failure);

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate int RecordCall(IntPtr manager, Record* response, Failure* failure);

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate int LoginWithCall(IntPtr manager, Text* userName, Text* password, Record* response, Failure* failure);

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate int TextCall(IntPtr manager, IntPtr* result, Failure* failure);

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate int TextOfTextCall(IntPtr manager, Text* text, IntPtr* result, Failure* failure);

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate int StaticTwoTextsCall(Text* first, Text* second, Failure* failure);

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate int StaticTextCall(IntPtr* result, Failure* failure);

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate int StaticTestCall(Text* text, int* result, Failure* failure);

        // Native code holds their addresses, so they must live as long as the process. Order: `ManagerMembers` in
        // login/ManagedPart.h.
        static readonly Delegate[] members =
        {
            new CreateCall(Create),
            new PlainCall(Dispose),
            Record(manager => manager.login()),
            LoginWith((manager, userName, password) => manager.login(userName, password)),
            Record(manager => manager.getLoggedInUser()),
            Plain(manager => manager.Logout()),
            Text(manager => manager.getAccessToken()),
            TextOfText((manager, url) => manager.formatAccessURL(url)),
            Text(manager => manager.getPlatformURL()),
            Text(manager => manager.getRegistryURL()),
            Text(manager => manager.getPassportURL()),
            Text(manager => manager.getCASCookie()),
            Text(manager => manager.getmyAppsURL()),
            Text(manager => manager.getKelpaURL()),
            Text(manager => manager.getTenantName()),
            Text(manager => manager.getTenantId()),
            Text(manager => manager.getTenantIds()),
            Text(manager => manager.getSpaceURL()),
            TextOfText((manager, url) => manager.getLoginTicket(url)),
            Plain(manager => manager.stopDNMListener()),
            StaticTwoTexts((server, clientId) => LoginManagerClient.DunmoreLoginBrowser(server, clientId)),
            StaticText(() => LoginManagerClient.getDNMAccessToken()),
            StaticTest(token => LoginManagerClient.isDunmorePlatformTokenExpired(token)),
        };

        /// Writes the members' addresses, in order.
        public static void Bind(IntPtr* table)
        {
            for (int i = 0; i < members.Length; i++)
                table[i] = Marshal.GetFunctionPointerForDelegate(members[i]);
        }

        // One wrapper per shape of call. The manager's member is called in a method of its own, never in the wrapper: a
        // manager that lacks it makes the runtime throw when that method is compiled, and this must be inside the try.

        static PlainCall Plain(Action<LoginManagerClient> member)
        {
            return (manager, failure) =>
            {
                try
                {
                    member(Managers.At(manager));
                    return 0;
                }
                catch (Exception e)
                {
                    return Report(e, failure);
                }
            };
        }

        static RecordCall Record(Func<LoginManagerClient, LoginResponse> member)
        {
            return (manager, response, failure) =>
            {
                try
                {
                    response->Fill(member(Managers.At(manager)));
                    return 0;
                }
                catch (Exception e)
                {
                    return Report(e, failure);
                }
            };
        }

        static LoginWithCall LoginWith(Func<LoginManagerClient, string, string, LoginResponse> member)
        {
            return (manager, userName, password, response, failure) =>
            {
                try
                {
                    response->Fill(member(Managers.At(manager), userName->ToString(), password->ToString()));
                    return 0;
                }
                catch (Exception e)
                {
                    return Report(e, failure);
                }
            };
        }

        static TextCall Text(Func<LoginManagerClient, string> member)
        {
            return (manager, result, failure) =>
            {
                try
                {
                    *result = Marshal.StringToBSTR(member(Managers.At(manager)));
                    return 0;
                }
                catch (Exception e)
                {
                    return Report(e, failure);
                }
            };
        }

        static TextOfTextCall TextOfText(Func<LoginManagerClient, string, string> member)
        {
            return (manager, text, result, failure) =>
            {
                try
                {
                    *result = Marshal.StringToBSTR(member(Managers.At(manager), text->ToString()));
                    return 0;
                }
                catch (Exception e)
                {
                    return Report(e, failure);
                }
            };
        }

        static StaticTwoTextsCall StaticTwoTexts(Action<string, string> member)
        {
            return (first, second, failure) =>
            {
                try
                {
                    member(first->ToString(), second->ToString());
                    return 0;
                }
                catch (Exception e)
                {
                    return Report(e, failure);
                }
            };
        }

        static StaticTextCall StaticText(Func<string> member)
        {
            return (result, failure) =>
            {
                try
                {
                    *result = Marshal.StringToBSTR(member());
                    return 0;
                }
                catch (Exception e)
                {
                    return Report(e, failure);
                }
            };
        }

        static StaticTestCall StaticTest(Func<string, bool> member)
        {
            return (text, result, failure) =>
            {
                try
                {
                    *result = member(text->ToString()) ? 1 : 0;
                    return 0;
                }
                catch (Exception e)
                {
                    return Report(e, failure);
                }
            };
        }

        static int Create(IntPtr login, IntPtr logout, int language, IntPtr* manager, Failure* failure)
        {
            try
            {
                *manager = Managers.Hold(NewManager(login, logout, language));
                return 0;
            }
            catch (Exception e)
            {
                return Report(e, failure);
            }
        }

        static LoginManagerClient NewManager(IntPtr login, IntPtr logout, int language)
        {
            return new LoginManagerClient(
                login == IntPtr.Zero ? null : new LoginHandlerDelegate(Handler(login)),
                logout == IntPtr.Zero ? null : new LogoutHandlerDelegate(Handler(logout)),
                (langCode)language);
        }

        static EventHandler Handler(IntPtr address)
        {
            return (EventHandler)Marshal.GetDelegateForFunctionPointer(address, typeof(EventHandler));
        }

        static int Dispose(IntPtr manager, Failure* failure)
        {
            try
            {
                var disposable = Managers.At(manager) as IDisposable;
                if (disposable != null)
                    disposable.Dispose();
                return 0;
            }
            catch (Exception e)
            {
                return Report(e, failure);
            }
            finally
            {
                Managers.Release(manager);
            }
        }

        static int Report(Exception e, Failure* failure)
        {
            var own = e as LoginManagerException;
            if (own != null)
            {
                failure->isManagerException = 1;
                failure->status = (int)own.status;
            }
            return failure->Report(e);
        }
    }
}
