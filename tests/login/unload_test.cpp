// The library loaded and freed by hand, as a plug-in's host does. It is called by its decorated names.

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "tests/support/program.h"

namespace {

// A member's convention is that of a fast call whose second argument is not used.
template <class Function>
Function* member(const char* decorated) {
    const FARPROC address = GetProcAddress(GetModuleHandleW(L"orvellogin.dll"), decorated);
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(address));
}

// The path is one that the runtime itself would reject.
bool staysLoaded(bool withManager) {
    const std::wstring path = L"\\\\?\\" + (program::ownfolder() / L"orvellogin.dll").native();
    const HMODULE library = LoadLibraryW(path.c_str());
    alignas(8) unsigned char client[64];
    member<void __fastcall(void*, int, void (*)(), void (*)(), int)>("_ZN18LoginManagerClientC1EPFvvES1_6uiLang")(
        client, 0, nullptr, nullptr, 0);
    if (withManager) {
        member<void __fastcall(void*, int)>("_ZN18LoginManagerClient15stopDNMListenerEv")(client, 0);
    }
    member<void __fastcall(void*, int)>("_ZN18LoginManagerClientD1Ev")(client, 0);
    FreeLibrary(library);
    return GetModuleHandleW(L"orvellogin.dll") != nullptr;
}

TEST(Unloading, IsPossibleUntilTheManagedSideMayCallBack) {
    EXPECT_FALSE(staysLoaded(false));
    EXPECT_FALSE(staysLoaded(false)) << "and to come again";
    EXPECT_TRUE(staysLoaded(true));
    EXPECT_TRUE(staysLoaded(true));
}

}  // namespace
