// What a host sees when the .NET Framework answers as it is documented to. The library is the one that ships; only its
// question for the system folder is answered with the folder of a stand-in for mscoree.dll.

#include <gmock/gmock.h>
#include <windows.h>

#include <psapi.h>

#include <cstdio>
#include <cwchar>
#include <filesystem>
#include <functional>
#include <string>

#include "login/LoginManagerClient.h"
#include "login/boundary/Boundary.h"
#include "orvsecutils/platform/unicode.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using namespace OrvelLoginClientCLR;
using namespace testing;

namespace {

const fs::path folder = program::ownfolder();
const fs::path part = folder / L"OrvelLoginClientCLR.dll";

// How the framework's functions end.
struct {
    HRESULT createInstance, getRuntime, getInterface, start;
    int starts;
    std::function<HRESULT(Handshake& handshake, DWORD& version)> enter;
    std::wstring location;  // of the managed part; empty if it cannot say
} framework;

// The framework's objects: pointers to tables of functions, of which the library calls those set at the end of
// Hosting().
void *hostTable[12], *infoTable[10], *metaTable[4];
void *host = hostTable, *info = infoTable, *meta = metaTable;

HRESULT handOut(HRESULT result, void** object, void** out) {
    *out = SUCCEEDED(result) ? object : nullptr;
    return result;
}

ULONG WINAPI release(void*) {
    return 0;
}

HRESULT WINAPI createInstance(REFCLSID, REFIID, void** out) {
    return handOut(framework.createInstance, &meta, out);
}

HRESULT WINAPI getRuntime(void*, const wchar_t* version, REFIID, void** out) {
    return handOut(std::wcscmp(version, L"v4.0.30319") == 0 ? framework.getRuntime : E_INVALIDARG, &info, out);
}

HRESULT WINAPI getInterface(void*, REFCLSID, REFIID, void** out) {
    return handOut(framework.getInterface, &host, out);
}

HRESULT WINAPI start(void*) {
    ++framework.starts;
    return framework.start;
}

HRESULT WINAPI execute(void*, const wchar_t* file, const wchar_t* type, const wchar_t* method, const wchar_t* argument,
                       DWORD* result) {
    EXPECT_EQ(fs::path(file), part);
    EXPECT_STREQ(type, L"OrvelLoginClientCLR.EntryPoint");
    wchar_t* second;
    const auto first = static_cast<std::uintptr_t>(std::wcstoull(argument, &second, 10));
    const auto last = static_cast<std::uintptr_t>(std::wcstoull(second, nullptr, 10));
    if (std::wcscmp(method, L"Enter") == 0) {
        EXPECT_EQ(first, interfaceVersion);
        return framework.enter(*reinterpret_cast<Handshake*>(last), *result);
    }
    EXPECT_STREQ(method, L"Location");
    *result = static_cast<DWORD>(framework.location.copy(reinterpret_cast<wchar_t*>(first), last));
    return *result ? S_OK : static_cast<HRESULT>(0x80131513);
}

fs::path systemFolder;

UINT WINAPI getSystemDirectory(wchar_t* buffer, UINT) {
    return static_cast<UINT>(std::wcscpy(buffer, systemFolder.c_str()) ? systemFolder.native().size() : 0);
}

template <class Function>
void* address(Function function) {
    return reinterpret_cast<void*>(function);
}

struct Hosting : Test {
    Hosting() {
        framework = {};
        systemFolder = folder / L"deployment" / L"framework";
        const HMODULE mscoree = LoadLibraryW((systemFolder / L"mscoree.dll").c_str());
        *static_cast<void**>(address(GetProcAddress(mscoree, "createInstance"))) = address(createInstance);
        // The library that this program is linked to imports the function through one of these pointers.
        const HMODULE plain = GetModuleHandleW(L"orvelloginc.dll");
        MODULEINFO image = {};
        GetModuleInformation(GetCurrentProcess(), plain ? plain : GetModuleHandleW(L"orvellogin.dll"), &image,
                             sizeof image);
        auto** const pointers = static_cast<void**>(image.lpBaseOfDll);
        void* const replacement = address(getSystemDirectory);
        for (auto** i = pointers; i < pointers + image.SizeOfImage / sizeof *pointers; ++i) {
            if (*i == address(GetSystemDirectoryW)) {
                WriteProcessMemory(GetCurrentProcess(), i, &replacement, sizeof replacement, nullptr);
            }
        }
        hostTable[2] = infoTable[2] = metaTable[2] = address(release);
        metaTable[3] = address(getRuntime);
        infoTable[9] = address(getInterface);
        hostTable[3] = address(start);
        hostTable[11] = address(execute);
    }
};

// The failure of a client's construction: its type, number and text.
std::tuple<std::wstring, unsigned, std::string> failure() {
    try {
        LoginManagerClient client(nullptr, nullptr, uiLangFallback);
        return {L"", 0, "none"};
    } catch (const loginRuntimeException& thrown) {
        const std::string text = orvsecutils::toutf8(thrown.message);
        return {thrown.typeName, static_cast<unsigned>(thrown.hresult),
                text == thrown.what() ? text : text + " / " + thrown.what()};
    }
}

using Row = std::pair<unsigned, const char*>;

auto failsAs(const Row& row, const std::string& text) {
    char number[32];
    std::snprintf(number, sizeof number, " (HRESULT 0x%08X)", row.first);
    return FieldsAre(L"", row.first, text + row.second + number);
}

const Row denied(0x80070005, "access is denied");
const Row exhausted(0x8007000E, "memory is exhausted");
const Row down(0x80131023, "the runtime is not available in this process (it has failed or is shutting down)");

TEST_F(Hosting, SaysWhyTheRuntimeDoesNotStart) {
    const std::string badImage =
        "a file is not a valid image for a " + std::to_string(8 * sizeof(void*)) + "-bit process";
    const Row rows[] = {
        {0x80131700, "the .NET Framework 4 is not installed or cannot be loaded"},
        {0x80131704,
         "this process has bound the activation of legacy components to an older runtime "
         "(useLegacyV2RuntimeActivationPolicy or CorBindToRuntimeEx of the host)"},
        {0x8007000B, badImage.c_str()},
        {0x800700C1, badImage.c_str()},
        {0x80131022, "the runtime gives no other reason than its code"},
        denied,
        exhausted,
        down,
    };
    const std::string text = "the .NET Framework 4 runtime cannot be started: ";
    for (HRESULT* answer :
         {&framework.createInstance, &framework.getRuntime, &framework.getInterface, &framework.start}) {
        for (const Row& row : rows) {
            *answer = static_cast<HRESULT>(row.first);
            EXPECT_THAT(failure(), failsAs(row, text));
        }
        *answer = S_OK;
    }
    const temporary_folder other;
    systemFolder = other.path;
    EXPECT_THAT(failure(), failsAs({0x8007007E, "mscoree.dll is missing: the .NET Framework is not installed"}, text));
    fs::copy_file(folder / L"libwinpthread-1.dll", other.path / L"mscoree.dll");
    EXPECT_THAT(failure(), failsAs({0x8007007F, "mscoree.dll is older than the .NET Framework 4"}, text));
}

TEST_F(Hosting, SaysWhyTheManagedPartDoesNotRun) {
    const char* const damaged = "the file is damaged, is not an assembly, or is for 64-bit processes";
    const Row rows[] = {
        {0x80131515,
         "the file is marked as coming from the internet (unblock the ZIP in its properties and unpack it again), or "
         "is on a network share (install to a local drive, or enable loadFromRemoteSources in the host's .config)"},
        {0x80131513, "the file is of another version, which lacks this method"},
        {0x80131522, "the file is of another version, which lacks this class"},
        {0x80131537, "the file is of another version, which does not understand this one"},
        {0x80131018, damaged},
        {0x8007000B, damaged},
        {0x8013101B, "the file needs a newer runtime than the one in this process"},
        {0x80070002, "the file, or one that it needs, is missing"},
        {0x80004005, "the runtime gives no other reason than its code"},
        denied,
        exhausted,
        down,
    };
    const std::string text =
        "the runtime cannot run OrvelLoginClientCLR.EntryPoint.Enter of " + orvsecutils::toutf8(part.native()) + ": ";
    for (const Row& row : rows) {
        framework.enter = [&](Handshake&, DWORD&) { return static_cast<HRESULT>(row.first); };
        EXPECT_THAT(failure(), failsAs(row, text));
    }
    EXPECT_EQ(framework.starts, 1) << "it stays started";
}

TEST_F(Hosting, AcceptsOnlyAManagedPartOfItsVersionThatFillsInEverything) {
    const auto answer = [](DWORD version, ManagedCall first, ManagedCall second, const volatile std::int32_t* third) {
        framework.enter = [=](Handshake& handshake, DWORD& result) {
            handshake.registerResolveHandler = first;
            handshake.bindManagerMembers = second;
            handshake.runtimeEnding = third;
            result = version;
            return S_OK;
        };
        return failure();
    };
    static const std::int32_t ending = 0;
    const ManagedCall refused = [](ManagerHandle, const StringArgument*, const StringArgument*, void*,
                                   ManagedFailure* failure) { return failure->hresult = 5; };
    framework.start = S_FALSE;
    const auto otherVersion =
        FieldsAre(L"", 0x80131522,
                  AllOf(StartsWith("these two files do not belong together: "),
                        HasSubstr("\\OrvelLoginClientCLR.dll (version " PROJECT_VERSION ".0); take both from one "
                                  "package (their handshake failed) (HRESULT 0x80131522)")));
    EXPECT_THAT(answer(interfaceVersion - 1, refused, refused, &ending), otherVersion);
    EXPECT_THAT(answer(interfaceVersion, nullptr, refused, &ending), otherVersion);
    EXPECT_THAT(answer(interfaceVersion, refused, nullptr, &ending), otherVersion);
    EXPECT_THAT(answer(interfaceVersion, refused, refused, nullptr), otherVersion);
    // The process has loaded the managed part of another copy, which says so, or is of an earlier version.
    const temporary_folder other;
    framework.location = other.path / L"OrvelLoginClientCLR.dll";
    fs::copy_file(folder / L"deployment\\earlier\\OrvelLoginClientCLR.dll", framework.location);
    const auto already = HasSubstr("another copy of the login library, " + orvsecutils::toutf8(framework.location) +
                                   " (version 0.9.8.7), so ");
    EXPECT_THAT(answer(0, nullptr, nullptr, nullptr), FieldsAre(L"", 0x80131522, already));
    framework.location.clear();
    fs::copy_file(folder / L"libwinpthread-1.dll", other.path / L"orvelloginc.dll");
    const HMODULE copy = LoadLibraryW((other.path / L"orvelloginc.dll").c_str());
    framework.enter = [](Handshake&, DWORD&) { return static_cast<HRESULT>(0x80131537); };
    EXPECT_THAT(failure(), FieldsAre(L"", 0x80131537, already));
    FreeLibrary(copy);
    EXPECT_THAT(answer(interfaceVersion, refused, refused, &ending), FieldsAre(L"", 5u, " / : "));
}

}  // namespace
