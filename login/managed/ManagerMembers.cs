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
        public NativeString statusDescription;
        public NativeString userName;
        public NativeString firstName;
        public NativeString lastName;
        public NativeString rowId;
        public NativeString aliasName;
        public NativeString domainName;

        public void Fill(LoginResponse response)
        {
            if (response == null)
                return;
            present = 1;
            statusDescription.Set(response.statusDescription);
            userName.Set(response.userName);
            firstName.Set(response.firstName);
            lastName.Set(response.lastName);
            rowId.Set(response.rowId);
            aliasName.Set(response.aliasName);
            domainName.Set(response.domainName);
        }
    }

    /// The arguments for creating a manager, and the result. Layout: `ManagedCreation` in login/ManagedPart.h.
    [StructLayout(LayoutKind.Sequential)]
    struct Creation
    {
        public IntPtr loginHandler;
        public IntPtr logoutHandler;
        public int language;
        public IntPtr manager;
    }

    /// A row of the native side's table: `ManagedMember` in login/ManagedPart.h.
    [StructLayout(LayoutKind.Sequential)]
    unsafe struct BoundMember
    {
        public char* name;
        public IntPtr call;
    }

    /// The members of the outside login manager. Each wrapper calls one member and passes its result on; the native side
    /// decides what a null or an exception means.
    static unsafe class ManagerMembers
    {
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        delegate void EventHandler();

        struct Member
        {
            public readonly string Name;
            public readonly NativeCall Call;

            public Member(string name, Body body)
            {
                Name = name;
                Call = Boundary.Guarded(body);
            }
        }

        // Static, so never collected: native code holds pointers to these delegates. A second copy of the native library in
        // the process gets the same pointers.
        static readonly Member[] members =
        {
            new Member("create", (m, a, b, r) => Create((Creation*)r)),
            new Member("dispose", (m, a, b, r) => Dispose(m)),
            new Member("login", (m, a, b, r) => ((Record*)r)->Fill(Managers.At(m).login())),
            new Member("loginWithPassword", (m, a, b, r) => ((Record*)r)->Fill(Managers.At(m).login(a->ToString(), b->ToString()))),
            new Member("getLoggedInUser", (m, a, b, r) => ((Record*)r)->Fill(Managers.At(m).getLoggedInUser())),
            new Member("Logout", (m, a, b, r) => Managers.At(m).Logout()),
            new Member("getAccessToken", (m, a, b, r) => Return(r, Managers.At(m).getAccessToken())),
            new Member("formatAccessURL", (m, a, b, r) => Return(r, Managers.At(m).formatAccessURL(a->ToString()))),
            new Member("getPlatformURL", (m, a, b, r) => Return(r, Managers.At(m).getPlatformURL())),
            new Member("getRegistryURL", (m, a, b, r) => Return(r, Managers.At(m).getRegistryURL())),
            new Member("getPassportURL", (m, a, b, r) => Return(r, Managers.At(m).getPassportURL())),
            new Member("getCASCookie", (m, a, b, r) => Return(r, Managers.At(m).getCASCookie())),
            new Member("getmyAppsURL", (m, a, b, r) => Return(r, Managers.At(m).getmyAppsURL())),
            new Member("getKelpaURL", (m, a, b, r) => Return(r, Managers.At(m).getKelpaURL())),
            new Member("getTenantName", (m, a, b, r) => Return(r, Managers.At(m).getTenantName())),
            new Member("getTenantId", (m, a, b, r) => Return(r, Managers.At(m).getTenantId())),
            new Member("getTenantIds", (m, a, b, r) => Return(r, Managers.At(m).getTenantIds())),
            new Member("getSpaceURL", (m, a, b, r) => Return(r, Managers.At(m).getSpaceURL())),
            new Member("getLoginTicket", (m, a, b, r) => Return(r, Managers.At(m).getLoginTicket(a->ToString()))),
            new Member("stopDNMListener", (m, a, b, r) => Managers.At(m).stopDNMListener()),
            new Member("DunmoreLoginBrowser", (m, a, b, r) => LoginManagerClient.DunmoreLoginBrowser(a->ToString(), b->ToString())),
            new Member("getDNMAccessToken", (m, a, b, r) => Return(r, LoginManagerClient.getDNMAccessToken())),
            new Member("isDunmorePlatformTokenExpired", (m, a, b, r) => *(int*)r = LoginManagerClient.isDunmorePlatformTokenExpired(a->ToString()) ? 1 : 0),
        };

        /// Fills in the function pointers of the members that `table` names.
        public static void Bind(BoundMember* table, int count)
        {
            for (int i = 0; i < count; i++)
                table[i].call = Marshal.GetFunctionPointerForDelegate(Named(new string(table[i].name)));
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

        static void Return(void* result, string text)
        {
            ((NativeString*)result)->Set(text);
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
