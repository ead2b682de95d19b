// Measures calls through the library against bare calls into the runtime, the memory of a client, and start-up times.

#include <windows.h>

#include <oleauto.h>
#include <psapi.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "../timing.h"
#include "Candidate.h"
#include "compiler_runtime.h"
#include "login/LoginManagerClient.h"
#include "login/hosting/ClrRuntime.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace {

struct Bare {
    BSTR (*getAccessToken)();
    BSTR (*formatAccessURL)(const wchar_t* text, int length);
    int (*isDunmorePlatformTokenExpired)(const wchar_t* text, int length);
    void (*loopGetAccessToken)(int calls);
    void (*loopFormatAccessURL)(int calls);
    void (*loopIsExpired)(int calls);
} bare;

void execute(const wchar_t* type, const wchar_t* method, const std::wstring& argument) {
    const std::wstring assembly = (program::ownfolder() / L"LoginBench.dll").wstring();
    OrvelLoginClientCLR::executeInDefaultAppDomain(assembly, type, method, argument);
}

std::wstring take(BSTR text) {
    struct Free {
        void operator()(wchar_t* chars) const { SysFreeString(chars); }
    };
    const std::unique_ptr<wchar_t, Free> owner(text);
    return std::wstring(text, SysStringLen(text));
}

// The bare calls have the same signatures as the library's members, including strings passed by value.

__attribute__((noinline)) std::wstring bareGetAccessToken() {
    return take(bare.getAccessToken());
}

__attribute__((noinline)) std::wstring bareFormatAccessUrl(std::wstring url) {
    return take(bare.formatAccessURL(url.data(), static_cast<int>(url.size())));
}

__attribute__((noinline)) bool bareIsExpired(std::wstring token) {
    return bare.isDunmorePlatformTokenExpired(token.data(), static_cast<int>(token.size())) != 0;
}

template <class Call>
std::function<void(int)> repeat(Call call) {
    return [call](int calls) {
        for (int i = 0; i < calls; ++i) {
            call();
        }
    };
}

void calls() {
    LoginManagerClient client(nullptr, nullptr, uiLangFallback);
    client.login(L"ada@example.com", L"analytical engine");
    execute(L"Bench.LoginBench", L"Enter", std::to_wstring(reinterpret_cast<std::uintptr_t>(&bare)));
    const std::wstring token = client.getDNMAccessToken();
    const std::wstring url(100, L'u');

    struct Row {
        const char* name;
        std::vector<std::function<void(int)>> functions;
    };
    const Row rows[] = {
        {"`getAccessToken`",
         {repeat([&] { client.getAccessToken(); }), repeat([] { bareGetAccessToken(); }), bare.loopGetAccessToken}},
        {"`formatAccessUrl`, 100 units",
         {repeat([&] { client.formatAccessUrl(url); }), repeat([&] { bareFormatAccessUrl(url); }),
          bare.loopFormatAccessURL}},
        {"`isDunmorePlatformTokenExpired`",
         {repeat([&] { client.isDunmorePlatformTokenExpired(token); }), repeat([&] { bareIsExpired(token); }),
          bare.loopIsExpired}},
    };
    std::printf(
        "| call | library, ns | bare pointer, ns | library : bare | managed to managed, ns | library : managed |\n");
    std::printf("|---|---|---|---|---|---|\n");
    for (const Row& row : rows) {
        const std::vector<double> ns = medianNanoseconds(31, 20000, row.functions);
        std::printf("| %s | %.0f | %.0f | %.2f | %.0f | %.1f |\n", row.name, ns[0], ns[1], ns[0] / ns[1], ns[2],
                    ns[0] / ns[2]);
    }
}

Candidate loadCandidate(const wchar_t* dll) {
    return reinterpret_cast<Candidate (*)()>(reinterpret_cast<void*>(GetProcAddress(LoadLibraryW(dll), "candidate")))();
}

void candidates() {
    const Candidate all[] = {loadCandidate(L"class_candidate.dll"), loadCandidate(L"functions_candidate.dll"),
                             loadCandidate(L"header_only_candidate.dll")};
    const struct {
        const char* name;
        void (*Candidate::*call)(int);
        int calls;
    } rows[] = {
        {"`getAccessToken`", &Candidate::getAccessToken, 20000},
        {"`formatAccessUrl`, 100 units", &Candidate::formatAccessUrl, 20000},
        {"`isDunmorePlatformTokenExpired`", &Candidate::isExpired, 20000},
        {"a record", &Candidate::record, 2000},
        {"a refused sign-in", &Candidate::refused, 1000},
    };
    std::printf("\n| call | exported class, ns | plain functions, ns | header-only class, ns | plain : exported ");
    std::printf("| header-only : exported |\n|---|---|---|---|---|---|\n");
    for (const auto& row : rows) {
        const std::vector<double> ns =
            medianNanoseconds(31, row.calls, {all[0].*row.call, all[1].*row.call, all[2].*row.call});
        std::printf("| %s | %.0f | %.0f | %.0f | %.2f | %.2f |\n", row.name, ns[0], ns[1], ns[2], ns[1] / ns[0],
                    ns[2] / ns[0]);
    }
}

// The size of a DLL without its debug information. Those sections have names that are too long for the section header,
// which then holds "/" and a number instead.
std::size_t sizeOf(const wchar_t* dll) {
    const auto* base = reinterpret_cast<const unsigned char*>(GetModuleHandleW(dll));
    const auto* headers =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
    std::size_t size = headers->OptionalHeader.SizeOfHeaders;
    for (WORD i = 0; i < headers->FileHeader.NumberOfSections; ++i, ++section) {
        size += section->Name[0] == '/' ? 0 : section->SizeOfRawData;
    }
    return size;
}

void sizes() {
    std::printf("\n| file | bytes without debug information |\n|---|---|\n");
    std::vector<std::string> names = {"orvellogin.dll", "orvelloginc.dll"};
    names.insert(names.end(), std::begin(compilerRuntime), std::end(compilerRuntime));
    for (const std::string& name : names) {
        std::printf("| `%s` | %zu |\n", name.c_str(), sizeOf(std::wstring(name.begin(), name.end()).c_str()));
    }
}

double workingSet() {
    execute(L"Bench.LoginBench", L"Collect", L"");
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<double>(counters.WorkingSetSize);
}

void memory() {
    constexpr int count = 2000;
    std::vector<std::unique_ptr<LoginManagerClient>> clients;
    clients.reserve(4 * count);
    const auto perClient = [&](bool withManager) {
        const double before = workingSet();
        for (int i = 0; i < count; ++i) {
            clients.push_back(std::make_unique<LoginManagerClient>(nullptr, nullptr, uiLangFallback));
            if (withManager) {
                clients.back()->stopDNMListener();
            }
        }
        return (workingSet() - before) / count;
    };
    perClient(true);  // warms up: the heaps grow
    const double withManager = perClient(true);
    const double withoutManager = perClient(false);
    std::printf("\n| memory, working set | bytes |\n|---|---|\n");
    std::printf("| per client without a manager | %.0f |\n", withoutManager);
    std::printf("| per client with its manager (the stand-in) | %.0f |\n", withManager);
}

// Runs in a child process. Its exit status is the time since process start, in microseconds.
int childFirstCall(const char* what) {
    if (std::strcmp(what, "call") == 0) {
        LoginManagerClient client(nullptr, nullptr, uiLangFallback);
        if (client.getTenantName().empty()) {
            return -1;
        }
    } else if (std::strcmp(what, "runtime") == 0) {
        execute(L"Bench.Runtime", L"Start", L"");
    }
    return microsecondsSinceStart();
}

// Runs a program that returns microseconds as its exit status. Returns milliseconds.
double runProgram(const wchar_t* name, const wchar_t* arguments) {
    static const temporary_folder folder;
    return program(name, arguments, folder.path).wait().status / 1000.0;
}

void start() {
    const struct {
        const char* what;
        const wchar_t* program;
        const wchar_t* arguments;
    } kinds[] = {
        {"`main`", L"login_bench.exe", L"--child nothing"},
        {"the runtime running its first managed method", L"login_bench.exe", L"--child runtime"},
        {"the library's first answered call", L"login_bench.exe", L"--child call"},
        {"the same in a small host of the exported class", L"class_first_call.exe", L""},
        {"the same in a static host of the header-only class", L"header_only_first_call.exe", L""},
    };
    constexpr std::size_t count = sizeof kinds / sizeof *kinds;
    std::vector<double> samples[count];
    for (int round = 0; round < 25; ++round) {
        for (std::size_t i = 0; i < count; ++i) {
            samples[i].push_back(runProgram(kinds[i].program, kinds[i].arguments));
        }
    }
    std::printf("\n| from process start to | ms |\n|---|---|\n");
    for (std::size_t i = 0; i < count; ++i) {
        std::sort(samples[i].begin(), samples[i].end());
        std::printf("| %s | %.1f |\n", kinds[i].what, samples[i][samples[i].size() / 2]);
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count == 3 && std::strcmp(arguments[1], "--child") == 0) {
        return childFirstCall(arguments[2]);
    }
    std::printf("## Login library\n\n");
    try {
        calls();
        candidates();
        sizes();
        memory();
        start();
        std::printf("\n");
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
