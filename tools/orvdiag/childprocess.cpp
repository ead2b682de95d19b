#include "tools/orvdiag/childprocess.h"

#include <iterator>

#include "orvsecutils/platform/windows/handles.h"
#include "tools/orvdiag/text.h"

namespace orvdiag {

using orvsecutils::filehandle;
using orvsecutils::kernelhandle;

namespace {

std::wstring ownpath() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

// In quotes. A backslash before the closing quote would escape it.
std::wstring quotedargument(const std::wstring& text) {
    const std::size_t backslashes = text.size() - (text.find_last_not_of(L'\\') + 1);
    return L" \"" + text + std::wstring(backslashes, L'\\') + L"\"";
}

void inheritable(HANDLE handle) {
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
}

}  // namespace

childprocess runchild(const std::vector<std::wstring>& arguments, HANDLE output, HANDLE memory, DWORD limitseconds) {
    const std::wstring program = ownpath();
    std::wstring commandline = L"\"" + program + L"\"";
    for (const std::wstring& argument : arguments) {
        commandline += quotedargument(argument);
    }
    const filehandle nowhere(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                         nullptr, OPEN_EXISTING, 0, nullptr));
    // The list keeps other handles of this process, and of the shell that started it, out of the new process.
    std::vector<HANDLE> handles = {nowhere.get()};
    for (const HANDLE handle : {output, memory}) {
        if (handle) {
            handles.push_back(handle);
        }
    }
    for (const HANDLE handle : handles) {
        inheritable(handle);
    }
    STARTUPINFOEXW start = {};
    start.StartupInfo.cb = sizeof start;
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdInput = start.StartupInfo.hStdError = nowhere.get();
    start.StartupInfo.hStdOutput = output ? output : nowhere.get();
    SIZE_T bytes = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &bytes);
    std::vector<char> attributes(bytes);
    start.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(attributes.data());
    PROCESS_INFORMATION info = {};
    // In the system's folder, because Windows also searches the current folder for DLLs.
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    if (!InitializeProcThreadAttributeList(start.lpAttributeList, 1, 0, &bytes) ||
        !UpdateProcThreadAttribute(start.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles.data(),
                                   handles.size() * sizeof(HANDLE), nullptr, nullptr) ||
        !CreateProcessW(program.c_str(), commandline.data(), nullptr, nullptr, TRUE,
                        CREATE_NO_WINDOW | CREATE_SUSPENDED | EXTENDED_STARTUPINFO_PRESENT, nullptr, folder,
                        &start.StartupInfo, &info)) {
        return {false, 0, "the trial process cannot be started: " + systemmessage(GetLastError())};
    }
    const kernelhandle process(info.hProcess);
    const kernelhandle thread(info.hThread);
    // Ends the process with this one, for example at Ctrl+C. Windows 7 refuses if this process is in a job already.
    const kernelhandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    AssignProcessToJobObject(job.get(), process.get());
    ResumeThread(thread.get());
    if (WaitForSingleObject(process.get(), limitseconds * 1000) != WAIT_OBJECT_0) {
        TerminateProcess(process.get(), 1);
        return {false, 0, "did not finish within " + std::to_string(limitseconds) + " seconds"};
    }
    DWORD status = 0;
    GetExitCodeProcess(process.get(), &status);
    return {true, status, std::string()};
}

}  // namespace orvdiag
