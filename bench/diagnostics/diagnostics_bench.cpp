// Measures a log record, with logging on and off, against bare system calls and against another library, and
// macaddress() against the bare WMI calls.

#include <windows.h>

#include <io.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <wbemcli.h>
#include <wrl/client.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>

#include "../timing.h"
#include "orvsecutils/log/log.h"
#include "orvsecutils/log/recordheader.h"
#include "orvsecutils/log/walltime.h"
#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/windows/com.h"
#include "tests/support/program.h"
#include "tests/support/sandbox.h"
#include "tests/support/temporary_folder.h"

using namespace orvsecutils;
using Microsoft::WRL::ComPtr;

namespace {

volatile std::size_t sink;

constexpr char message[] = "wmi::query(SELECT MACAddress FROM Win32_NetworkAdapterConfiguration)=3";

// The program's original standard output; main() redirects stdout, to which records are echoed.
std::FILE* report = nullptr;

template <class Call>
std::function<void(int)> times(Call call) {
    return [call](int calls) {
        for (int i = 0; i < calls; ++i) {
            call();
        }
    };
}

void appendbare(const std::filesystem::path& path, std::string_view line) {
    const filehandle file(CreateFileW(path.c_str(), FILE_APPEND_DATA,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    WriteFile(file.get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

// A sink that opens and closes the file for each line, as our log does.
class reopeningsink : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
public:
    explicit reopeningsink(std::string pathIn) : path(std::move(pathIn)) {}

protected:
    void sink_it_(const spdlog::details::log_msg& record) override {
        spdlog::memory_buf_t line;
        formatter_->format(record, line);
        file.open(path);
        file.write(line);
        file.close();
    }
    void flush_() override {}

private:
    std::string path;
    spdlog::details::file_helper file;
};

spdlog::logger logger(const char* name, spdlog::sink_ptr where) {
    spdlog::logger result(name, std::move(where));
    result.set_pattern("%m/%d/%Y %H:%M:%S%z,%l,%n,%v");
    return result;
}

void delivered() {
    sandbox box;
    box.setswitch(HKEY_CURRENT_USER, 1);
    loginfo() << message;
    const std::string line = contentof(box.log());

    // In the same folder as the log, because the length of the path and the number of entries are part of the cost.
    const std::filesystem::path barepath = box.folder() / "bare.log";
    appendbare(barepath, line);
    // Not in that folder, because spdlog takes file names in the code page, which cannot represent the folder's name.
    const std::string folder = std::filesystem::temp_directory_path().string() + "\\";
    const std::string flushedpath = folder + "diagnostics_bench_flushed.log";
    const std::string reopenedpath = folder + "diagnostics_bench_reopened.log";
    {
        spdlog::logger flushed =
            logger("diagnostics_bench.exe", std::make_shared<spdlog::sinks::basic_file_sink_st>(flushedpath, true));
        flushed.flush_on(spdlog::level::info);
        spdlog::logger reopened = logger("diagnostics_bench.exe", std::make_shared<reopeningsink>(reopenedpath));

        std::fprintf(report, "| log file, MiB | record, µs | open, append, close, µs | record : bare | ");
        std::fprintf(report,
                     "spdlog, open and close each, µs | record : spdlog | spdlog, kept open, flush each, µs |\n");
        std::fprintf(report, "|---|---|---|---|---|---|---|\n");
        for (const int mebibytes : {0, 1, 64}) {
            for (const std::filesystem::path& path : {box.log(), barepath}) {
                std::filesystem::resize_file(path, static_cast<std::uintmax_t>(mebibytes) << 20);
            }
            const std::vector<double> ns =
                medianNanoseconds(101, 100,
                                  {times([] { loginfo() << message; }), times([&] { appendbare(barepath, line); }),
                                   times([&] { reopened.info(message); }), times([&] { flushed.info(message); })});
            std::fprintf(report, "| %d | %.1f | %.1f | %.2f | %.1f | %.2f | %.1f |\n", mebibytes, ns[0] / 1000,
                         ns[1] / 1000, ns[0] / ns[1], ns[2] / 1000, ns[0] / ns[2], ns[3] / 1000);
        }
    }
    std::filesystem::remove(flushedpath);
    std::filesystem::remove(reopenedpath);
}

std::string streamedtime() {
    const std::time_t now = std::time(nullptr);
    std::ostringstream text;
    text << std::put_time(std::localtime(&now), "%m/%d/%Y %H:%M:%S%z");
    return text.str();
}

// Runs in a process of its own, because a process reads the switch only once.
void off() {
    const walltime now = currentwalltime();
    const std::vector<double> ns = medianNanoseconds(
        101, 2000,
        {times([] { loginfo() << message; }), times([] { sink = timetext(currentwalltime()).size(); }), times([&] {
             std::stringbuf header;
             putheader(header, now, 0, "diagnostics_bench.exe");
             sink = header.in_avail();
         }),
         times([] { sink = std::stringstream().good(); }), times([] { sink = streamedtime().size(); })});
    std::fprintf(report,
                 "\n| record with logging off, ns | of it the time, ns | share | header text without the clock, ns | ");
    std::fprintf(report,
                 "an empty string stream, ns | the time by a stream instead, ns |\n|---|---|---|---|---|---|\n");
    std::fprintf(report, "| %.0f | %.0f | %.0f %% | %.0f | %.0f | %.0f |\n", ns[0], ns[1], 100 * ns[1] / ns[0], ns[2],
                 ns[3], ns[4]);
}

// The WMI calls of macaddress(), without building rows or converting texts.
void addressbare() {
    CoInitialize(nullptr);
    CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr,
                         EOAC_NONE, nullptr);
    ComPtr<IWbemLocator> locator;
    CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator, &locator);
    const bstr namespacepath = makebstr(L"ROOT\\CIMV2");
    const bstr language = makebstr(L"WQL");
    const bstr text = makebstr(L"SELECT MACAddress FROM Win32_NetworkAdapterConfiguration WHERE IPEnabled=TRUE");
    ComPtr<IWbemServices> services;
    locator->ConnectServer(namespacepath.get(), nullptr, nullptr, nullptr, WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr,
                           nullptr, &services);
    CoSetProxyBlanket(services.Get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                      RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
    ComPtr<IEnumWbemClassObject> objects;
    services->ExecQuery(language.get(), text.get(), WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr,
                        &objects);
    ComPtr<IWbemClassObject> object;
    ULONG count = 0;
    while (objects->Next(-1, 1, &object, &count) == S_OK) {
        variant value;
        object->Get(L"MACAddress", 0, &value.value, nullptr, nullptr);
        sink = V_VT(&value.value);
    }
}

void address() {
    const std::vector<double> ns =
        medianNanoseconds(31, 5, {times([] { sink = currentplatform().macaddress().size(); }), times(addressbare)});
    std::fprintf(report, "\n| `macaddress`, ms | bare WMI calls, ms | ratio |\n|---|---|---|\n| %.2f | %.2f | %.2f |\n",
                 ns[0] / 1e6, ns[1] / 1e6, ns[0] / ns[1]);
}

void runoff() {
    const temporary_folder folder;
    std::string output = program(L"diagnostics_bench.exe", L"off", folder.path).wait().output;
    output.erase(std::remove(output.begin(), output.end(), '\r'), output.end());
    std::fputs(output.c_str(), report);
}

}  // namespace

int main(int count, char** arguments) {
    report = _fdopen(_dup(_fileno(stdout)), "w");
    // Buffered, as a host's standard output to a pipe or a file is; the C library would write to a device byte by byte.
    if (!report || !std::freopen("NUL", "w", stdout) || std::setvbuf(stdout, nullptr, _IOFBF, 4096) != 0) {
        return 1;
    }
    if (count > 1 && std::strcmp(arguments[1], "off") == 0) {
        off();
    } else {
        std::fprintf(report, "## Diagnostics log and adapter address\n\n");
        delivered();
        runoff();
        address();
    }
    std::fclose(report);
}
