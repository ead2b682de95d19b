using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;
using loginManagerUtils;
using OrvelLoginClient;

namespace OrvelLoginClientCLR
{
    /// The members of the outside login manager. Each wrapper calls one member and passes its result on; the native side
    /// decides what a null or an exception means.
    static unsafe class ManagerMembers
    {
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate void EventHandler();

        struct Member
        {
            public readonly string Name;
            public readonly string Signature;
            public readonly NativeCall Call;

            public Member(string name, string signature, Body body)
            {
                Name = name;
                Signature = signature;
                Call = Boundary.Guarded(body);
            }
        }

        // Name in the native side's table, signature in the manager's class as Inspection writes it (null for what the manager
        // may lack), and the call. Static, so never collected: native code holds pointers to these delegates. A second copy of
        // the native library in the process gets the same pointers.
        static readonly Member[] members =
        {
            new Member("create", "Void .ctor(LoginHandlerDelegate, LogoutHandlerDelegate, langCode)", (m, a, b, r) => Create((Creation*)r)),
            new Member("dispose", null, (m, a, b, r) => Dispose(m)),
            new Member("login", "LoginResponse login()", (m, a, b, r) => ((Record*)r)->Fill(Managers.At(m).login())),
            new Member("loginWithPassword", "LoginResponse login(String, String)", (m, a, b, r) => ((Record*)r)->Fill(Managers.At(m).login(a->ToString(), b->ToString()))),
            new Member("getLoggedInUser", "LoginResponse getLoggedInUser()", (m, a, b, r) => ((Record*)r)->Fill(Managers.At(m).getLoggedInUser())),
            new Member("Logout", "Void Logout()", (m, a, b, r) => Managers.At(m).Logout()),
            new Member("getAccessToken", "String getAccessToken()", (m, a, b, r) => Return(r, Managers.At(m).getAccessToken())),
            new Member("formatAccessURL", "String formatAccessURL(String)", (m, a, b, r) => Return(r, Managers.At(m).formatAccessURL(a->ToString()))),
            new Member("getPlatformURL", "String getPlatformURL()", (m, a, b, r) => Return(r, Managers.At(m).getPlatformURL())),
            new Member("getRegistryURL", "String getRegistryURL()", (m, a, b, r) => Return(r, Managers.At(m).getRegistryURL())),
            new Member("getPassportURL", "String getPassportURL()", (m, a, b, r) => Return(r, Managers.At(m).getPassportURL())),
            new Member("getCASCookie", "String getCASCookie()", (m, a, b, r) => Return(r, Managers.At(m).getCASCookie())),
            new Member("getmyAppsURL", "String getmyAppsURL()", (m, a, b, r) => Return(r, Managers.At(m).getmyAppsURL())),
            new Member("getKelpaURL", "String getKelpaURL()", (m, a, b, r) => Return(r, Managers.At(m).getKelpaURL())),
            new Member("getTenantName", "String getTenantName()", (m, a, b, r) => Return(r, Managers.At(m).getTenantName())),
            new Member("getTenantId", "String getTenantId()", (m, a, b, r) => Return(r, Managers.At(m).getTenantId())),
            new Member("getTenantIds", "String getTenantIds()", (m, a, b, r) => Return(r, Managers.At(m).getTenantIds())),
            new Member("getSpaceURL", "String getSpaceURL()", (m, a, b, r) => Return(r, Managers.At(m).getSpaceURL())),
            new Member("getLoginTicket", "String getLoginTicket(String)", (m, a, b, r) => Return(r, Managers.At(m).getLoginTicket(a->ToString()))),
            new Member("stopDNMListener", "Void stopDNMListener()", (m, a, b, r) => Managers.At(m).stopDNMListener()),
            new Member("DunmoreLoginBrowser", "static Void DunmoreLoginBrowser(String, String)", (m, a, b, r) => LoginManagerClient.DunmoreLoginBrowser(a->ToString(), b->ToString())),
            new Member("getDNMAccessToken", "static String getDNMAccessToken()", (m, a, b, r) => Return(r, LoginManagerClient.getDNMAccessToken())),
            new Member("isDunmorePlatformTokenExpired", "static Boolean isDunmorePlatformTokenExpired(String)", (m, a, b, r) => *(int*)r = LoginManagerClient.isDunmorePlatformTokenExpired(a->ToString()) ? 1 : 0),
        };

        /// Fills in the function pointers of the members that `table` names.
        public static void Bind(ManagedMember* table, int count)
        {
            for (int i = 0; i < count; i++)
                table[i].call = Marshal.GetFunctionPointerForDelegate(Named(new string(table[i].name)));
        }

        /// The signatures of what the native side calls. Uses no outside type: those are only in the bodies of the calls.
        public static IEnumerable<string> Signatures()
        {
            foreach (Member member in members)
            {
                if (member.Signature != null)
                    yield return member.Signature;
            }
        }

        static NativeCall Named(string name)
        {
            foreach (Member member in members)
            {
                if (member.Name == name)
                    return member.Call;
            }
            throw new MissingMethodException("the managed part of the login library lacks the member " + name);
        }

        static void Return(void* result, string value)
        {
            ((NativeString*)result)->Set(value);
        }

        static void Create(Creation* creation)
        {
            IntPtr login = creation->loginHandler;
            IntPtr logout = creation->logoutHandler;
            creation->manager = Managers.Hold(new LoginManagerClient(
                login == IntPtr.Zero ? null : new LoginHandlerDelegate(Handler(login)),
                logout == IntPtr.Zero ? null : new LogoutHandlerDelegate(Handler(logout)),
                (langCode)creation->language));
        }

        static EventHandler Handler(IntPtr address)
        {
            return (EventHandler)Marshal.GetDelegateForFunctionPointer(address, typeof(EventHandler));
        }

        static void Dispose(IntPtr manager)
        {
            // As an object, so that the interface is looked up at run time: not every build of the manager implements it.
            object released = Managers.Release(manager);
            var disposable = released as IDisposable;
            if (disposable != null)
                disposable.Dispose();
        }
    }
}
