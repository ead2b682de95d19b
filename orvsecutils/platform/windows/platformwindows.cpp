#include "orvsecutils/platform/windows/platformwindows.h"

#include <windows.h>

#include <knownfolders.h>
#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "orvsecutils/platform/joining.h"
#include "orvsecutils/platform/languagecode.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/filetime.h"
#include "orvsecutils/platform/windows/handles.h"
#include "orvsecutils/platform/windows/registry.h"
#include "orvsecutils/platform/wmi.h"

namespace orvsecutils {

namespace {

std::string commaseparated(std::initializer_list<DWORD> numbers) {
    std::string text;
    for (const DWORD number : numbers) {
        // Not a stream, because the host's global locale may group digits.
        text += (text.empty() ? "" : ",") + std::to_string(number);
    }
    return text;
}

std::string knownfolder(const KNOWNFOLDERID& id) {
    wchar_t* path = nullptr;
    const HRESULT result = SHGetKnownFolderPath(id, 0, nullptr, &path);
    const comallocatedtext owner(path);  // to be freed even after a failure
    return SUCCEEDED(result) ? toutf8(path) : std::string();
}

// A copy of the path for the shell's path functions, which work in place and require at least MAX_PATH code units.
std::wstring pathbuffer(std::wstring_view path) {
    std::wstring buffer = utf16buffer(std::max<std::int64_t>(static_cast<std::int64_t>(path.size()) + 1, MAX_PATH));
    path.copy(buffer.data(), path.size());
    return buffer;
}

// The path of the process's executable; empty if it is too long.
std::wstring modulepath() {
    std::wstring path = utf16buffer(MAX_PATH);
    const DWORD units = GetModuleFileNameW(nullptr, path.data(), MAX_PATH);
    path.resize(units < MAX_PATH ? units : 0);  // MAX_PATH means truncated
    return path;
}

bool isdirectory(DWORD attributes) {
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool ensuredirectory(const wchar_t* path) {
    const DWORD attributes = GetFileAttributesW(path);
    if (attributes != INVALID_FILE_ATTRIBUTES) {
        return isdirectory(attributes);
    }
    if (CreateDirectoryW(path, nullptr)) {
        return true;
    }
    if (GetLastError() == ERROR_PATH_NOT_FOUND) {
        std::wstring parent = pathbuffer(path);
        if (!PathRemoveFileSpecW(parent.data()) || !ensuredirectory(parent.c_str())) {
            return false;
        }
        if (CreateDirectoryW(path, nullptr)) {
            return true;
        }
    }
    // Not a failure if another process has created the folder since the first check.
    return GetLastError() == ERROR_ALREADY_EXISTS && isdirectory(GetFileAttributesW(path));
}

std::string textorempty(const wchar_t* text) {
    return text ? toutf8(text) : std::string();
}

}  // namespace

platform& currentplatform() {
    static platformwindows instance;
    return instance;
}

int platformwindows::uilanguage() const {
    return languagecode(GetUserDefaultLangID());
}

std::string platformwindows::computername() const {
    DWORD units = 0;
    GetComputerNameExW(ComputerNameDnsHostname, nullptr, &units);
    if (units == 0) {
        return std::string();
    }
    std::wstring name = utf16buffer(units);
    return GetComputerNameExW(ComputerNameDnsHostname, name.data(), &units) ? toutf8(name.c_str()) : std::string();
}

std::string platformwindows::username() const {
    // Not UNLEN + 1: a name of UNLEN (256) code units has always been returned as empty, and callers may rely on it.
    wchar_t name[256];
    DWORD units = 256;
    return GetUserNameW(name, &units) ? toutf8(name) : std::string();
}

std::string platformwindows::osversion() const {
    OSVERSIONINFOEXW version = {};
    version.dwOSVersionInfoSize = sizeof version;
    if (!GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version))) {
        return std::string();
    }
    return commaseparated({version.dwMajorVersion, version.dwMinorVersion, version.dwBuildNumber,
                           version.wServicePackMajor, version.wServicePackMinor});
}

std::string platformwindows::languageids() const {
    return commaseparated({GetUserDefaultLangID(), GetSystemDefaultLangID()});
}

std::string platformwindows::processorinfo() const {
    SYSTEM_INFO system = {};
    GetSystemInfo(&system);
    return commaseparated({system.dwNumberOfProcessors, system.wProcessorArchitecture, system.wProcessorLevel});
}

std::string platformwindows::profilefolder() const {
    return knownfolder(FOLDERID_Profile);
}

bool platformwindows::createdirectory(const std::string& path) const {
    std::wstring buffer = toutf16(path);
    // PathRemoveFileSpec only recognises backslashes. After the prefix \\?\ a slash is an ordinary character.
    if (buffer.compare(0, 4, L"\\\\?\\") != 0) {
        std::replace(buffer.begin(), buffer.end(), L'/', L'\\');
    }
    return ensuredirectory(buffer.c_str());
}

std::string platformwindows::appendpath(const std::string& path, const std::string& more) const {
    const std::wstring appended = toutf16(more);
    std::wstring buffer = pathbuffer(toutf16(path));
    // Checked here, because the shell truncates some paths that are too long and rejects others.
    if (buffer.size() > MAX_PATH || appended.size() >= MAX_PATH || !PathAppendW(buffer.data(), appended.c_str())) {
        return std::string();
    }
    return toutf8(buffer.c_str());
}

std::string platformwindows::executablename() const {
    std::wstring path = modulepath();
    PathStripPathW(path.data());
    return toutf8(path.c_str());
}

std::string platformwindows::parentfolder(const std::string& path) const {
    std::wstring buffer = pathbuffer(toutf16(path));
    PathRemoveFileSpecW(buffer.data());
    return toutf8(buffer.c_str());
}

std::string platformwindows::filename(const std::string& path) const {
    std::wstring buffer = pathbuffer(toutf16(path));
    PathStripPathW(buffer.data());
    return toutf8(buffer.c_str());
}

settingsmap platformwindows::readsettings(settingsscope scope, const settingsdef& definition) const {
    return readgroup(scope, definition);
}

bool platformwindows::writesettings(settingsscope scope, const settingsdef& definition,
                                    const settingsmap& values) const {
    return writegroup(scope, definition, values);
}

std::string platformwindows::defaultsettingsroot() const {
    return "software";
}

std::string platformwindows::executablefolder() const {
    return parentfolder(toutf8(modulepath()));
}

int platformwindows::runprocess(const std::string& file, const std::vector<std::string>& arguments) const {
    const std::wstring widefile = toutf16(file);
    const std::wstring parameters = toutf16(joinarguments(arguments));
    SHELLEXECUTEINFOW launch = {};
    launch.cbSize = sizeof launch;
    launch.fMask = SEE_MASK_NOCLOSEPROCESS;
    launch.lpFile = widefile.c_str();
    launch.lpParameters = parameters.c_str();
    launch.nShow = SW_SHOW;
    ShellExecuteExW(&launch);

    DWORD exitcode = static_cast<DWORD>(-1);
    // Deliberately never closed, so that the launched process's identifier is not reused while this process lives.
    const HANDLE processleftopen = launch.hProcess;
    if (processleftopen) {  // null also if a program that was already running opens the document
        WaitForSingleObject(processleftopen, INFINITE);
        GetExitCodeProcess(processleftopen, &exitcode);
    }
    return static_cast<int>(exitcode);
}

bool platformwindows::pathexists(const std::string& path) const {
    return GetFileAttributesW(toutf16(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

void platformwindows::deletefile(const std::string& path) const {
    DeleteFileW(toutf16(path).c_str());
}

std::string platformwindows::localappdatafolder() const {
    return knownfolder(FOLDERID_LocalAppData);
}

std::string platformwindows::roamingappdatafolder() const {
    return knownfolder(FOLDERID_RoamingAppData);
}

std::string platformwindows::programfilesfolder() const {
    return knownfolder(FOLDERID_ProgramFiles);
}

std::string platformwindows::programfilesx86folder() const {
    return knownfolder(FOLDERID_ProgramFilesX86);
}

std::string platformwindows::macaddress() const {
    return adapteraddress(wmi::connect().get());
}

bool platformwindows::filetimes(const std::string& path, std::int64_t& creation, std::int64_t& lastaccess,
                                std::int64_t& lastwrite) const {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExW(toutf16(path).c_str(), GetFileExInfoStandard, &data)) {
        return false;
    }
    creation = calendartime(data.ftCreationTime);
    lastaccess = calendartime(data.ftLastAccessTime);
    lastwrite = calendartime(data.ftLastWriteTime);
    return true;
}

bool platformwindows::filetimes(const std::string& path, std::int64_t& creation, std::int64_t& lastaccess,
                                std::int64_t& lastwrite) {
    return std::as_const(*this).filetimes(path, creation, lastaccess, lastwrite);
}

bool platformwindows::findfiles(const std::string& pattern, std::vector<fileentry>& entries) const {
    entries.clear();
    WIN32_FIND_DATAW found = {};
    const findhandle search(FindFirstFileW(toutf16(pattern).c_str(), &found));
    if (!search) {
        return false;
    }
    do {
        const std::wstring_view name(found.cFileName);
        if (name != L"." && name != L"..") {
            entries.push_back({toutf8(name), calendartime(found.ftLastWriteTime)});
        }
    } while (FindNextFileW(search.get(), &found));
    return true;
}

bool platformwindows::readinivalue(const std::string& file, const std::string& section, const std::string& key,
                                   std::string& value) const {
    value.clear();
    wchar_t text[MAX_PATH];
    DWORD units = GetPrivateProfileStringW(toutf16(section).c_str(), toutf16(key).c_str(), L"", text, MAX_PATH,
                                           toutf16(file).c_str());
    if (units == MAX_PATH - 1 && IS_HIGH_SURROGATE(text[units - 1])) {
        --units;  // the system cut a surrogate pair
    }
    value = toutf8({text, units});
    return !value.empty();
}

bool platformwindows::serviceconfig(const std::string& service, serviceconfiguration& configuration) const {
    const servicehandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ENUMERATE_SERVICE));
    if (!manager) {
        return false;
    }
    const servicehandle handle(OpenServiceW(manager.get(), toutf16(service).c_str(), SERVICE_QUERY_CONFIG));
    DWORD bytes = 0;
    if (!handle || QueryServiceConfigW(handle.get(), nullptr, 0, &bytes) ||
        GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return false;
    }
    // One block of more than the structure's size: its strings follow it.
    const localmemory<QUERY_SERVICE_CONFIGW> record(static_cast<QUERY_SERVICE_CONFIGW*>(LocalAlloc(LMEM_FIXED, bytes)));
    if (!record || !QueryServiceConfigW(handle.get(), record.get(), bytes, &bytes)) {
        return false;
    }
    configuration = {record->dwServiceType,
                     record->dwStartType,
                     record->dwErrorControl,
                     textorempty(record->lpBinaryPathName),
                     textorempty(record->lpLoadOrderGroup),
                     record->dwTagId,
                     joindependencies(record->lpDependencies),
                     textorempty(record->lpServiceStartName),
                     textorempty(record->lpDisplayName)};
    return true;
}

bool platformwindows::settingsexist(settingsscope scope, const settingsdef& definition) const {
    return groupexists(scope, definition);
}

std::string platformwindows::publicfolder() const {
    return knownfolder(FOLDERID_Public);
}

bool platformwindows::directoryexists(const std::string& path) const {
    return isdirectory(GetFileAttributesW(toutf16(path).c_str()));
}

}  // namespace orvsecutils
