#include "tools/selftest/process.h"

#include <windows.h>

#include <fstream>
#include <iterator>

#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"

namespace selftest {

using orvsecutils::filehandle;
using orvsecutils::kernelhandle;

ending run(const std::filesystem::path& program, const std::string& arguments, const std::filesystem::path& folder,
           unsigned secondslimit, const std::filesystem::path& scratch) {
    const std::filesystem::path outputpath = scratch / "output";
    ending result;
    const ULONGLONG start = GetTickCount64();
    {
        SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
        // Shared for deletion, so that a background process that inherited it does not keep the folder.
        const filehandle output(CreateFileW(outputpath.c_str(), FILE_APPEND_DATA,
                                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherit,
                                            CREATE_ALWAYS, 0, nullptr));
        const filehandle nothing(
            CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit, OPEN_EXISTING, 0, nullptr));
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = nothing.get();
        startup.hStdOutput = startup.hStdError = output.get();
        std::wstring commandline = L"\"" + program.native() + L"\" " + orvsecutils::toutf16(arguments);
        PROCESS_INFORMATION info = {};
        // Suspended, so that it is in the job before it can start another process.
        if (!CreateProcessW(program.c_str(), commandline.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                            folder.c_str(), &startup, &info)) {
            result.status = GetLastError();
            return result;
        }
        result.started = true;
        const kernelhandle process(info.hProcess), thread(info.hThread), job(CreateJobObjectW(nullptr, nullptr));
        AssignProcessToJobObject(job.get(), process.get());
        ResumeThread(thread.get());
        result.timedout = WaitForSingleObject(process.get(), secondslimit * 1000) != WAIT_OBJECT_0;
        DWORD status = 0;
        GetExitCodeProcess(process.get(), &status);
        result.status = status;
        TerminateJobObject(job.get(), 1);
        // Where processes could not be put into a job, at least the program itself ends.
        TerminateProcess(process.get(), 1);
        WaitForSingleObject(process.get(), 10000);
    }
    result.seconds = static_cast<double>(GetTickCount64() - start) / 1000;
    std::ifstream file(outputpath, std::ios::binary);
    result.output.assign(std::istreambuf_iterator<char>(file), {});
    return result;
}

}  // namespace selftest
