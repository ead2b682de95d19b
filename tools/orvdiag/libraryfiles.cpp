#include "tools/orvdiag/libraryfiles.h"

#include <windows.h>

#include <tlhelp32.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "login/hosting/ClrRuntime.h"
#include "login/hosting/LibraryFile.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"
#include "shippedfiles.h"
#include "tools/orvdiag/diskfile.h"
#include "tools/orvdiag/image.h"
#include "tools/orvdiag/text.h"
#include "tools/orvdiag/trial.h"

namespace orvdiag {

using orvsecutils::toutf16;

namespace {

constexpr char ownversion[] = ORVDIAG_VERSION ".0";
constexpr char managerversion[] = ORVELLOGIN_MANAGER_VERSION;
constexpr char managedpart[] = "OrvelLoginClientCLR.dll";
constexpr const char* assemblies[] = {"OrvelLoginClient", "loginManagerUtils"};

// The library's two DLLs. `exported` is a function that only this DLL exports, to identify it.
struct librarydll {
    const char* file;
    const char* exported;
    bool needsruntimedlls;
};
constexpr librarydll classdll = {"orvellogin.dll", "_ZN18LoginManagerClientC1EPFvvES1_6uiLang", true};
constexpr librarydll functiondll = {"orvelloginc.dll", "orvellogin_version", false};

std::string assemblyfile(const std::string& name) {
    return "OrvelLoginManagerClient\\" + name + ".dll";
}

bool isownfile(std::string_view name) {
    return name == classdll.file || name == functiondll.file || name == managedpart;
}

// The names of the files that ship, in the order of their build: the library's own, then the compiler's runtime DLLs.
std::vector<std::string> shippednames() {
    std::vector<std::string> names;
    for (const shippedfile& row : shippedfiles) {
        if (names.empty() || names.back() != row.name) {
            names.push_back(row.name);
        }
    }
    return names;
}

struct libraryfile {
    std::string name;  // below the library's folder
    std::wstring path;
    std::optional<std::string> bytes;
    std::optional<image> headers;
    std::string version;
};

libraryfile open(const std::wstring& folder, const std::string& name) {
    libraryfile file = {name, folder + L"\\" + toutf16(name), {}, {}, {}};
    file.bytes = readfile(file.path);
    if (file.bytes) {
        file.headers = readimage(*file.bytes);
        file.version = fileversion(*file.bytes);
    }
    return file;
}

class check {
public:
    check(const std::wstring& folderIn, findings& foundIn) : folder(folderIn), found(foundIn) {}

    void run() {
        // A folder may contain either DLL or both.
        const bool hasfunctiondll = exists(functiondll.file);
        const bool hasclassdll = exists(classdll.file);
        if (!hasfunctiondll && !hasclassdll) {
            found.add(area::files, cause::filemissing, std::string(classdll.file) + " or " + functiondll.file);
        }
        std::string present;
        for (const librarydll& dll : {functiondll, classdll}) {
            if (exists(dll.file)) {
                const std::string version = checklibrarydll(dll);
                present += (present.empty() ? "" : ", ") + std::string(dll.file) + " " + version;
            }
        }
        found.good(area::files, present + ": complete and as built");
        const bool usable = inspect(managedpart, true, area::files).has_value();
        checkmanager(usable, hasclassdll ? classdll.file : functiondll.file);
    }

private:
    bool exists(const std::string& name) const {
        return GetFileAttributesW((folder + L"\\" + toutf16(name)).c_str()) != INVALID_FILE_ATTRIBUTES;
    }

    // Adds what is wrong with a file; none if it cannot be used.
    std::optional<libraryfile> inspect(const std::string& name, bool managed, area where) {
        const libraryfile file = open(folder, name);
        const auto fault = [&](cause why, const std::string& detail) {
            found.add(where, why, name + (detail.empty() ? "" : " (" + detail + ")"));
            return std::nullopt;
        };
        if (!file.bytes) {
            const DWORD reason = GetLastError();
            if (reason == ERROR_FILE_NOT_FOUND || reason == ERROR_PATH_NOT_FOUND) {
                return fault(where == area::manager ? cause::assemblymissing : cause::filemissing, "");
            }
            return fault(cause::fileunreadable, systemmessage(reason));
        }
        if (!file.headers) {
            return fault(cause::filedamaged, "not a DLL");
        }
        if (file.headers->bytes > file.bytes->size()) {
            return fault(cause::filedamaged, "truncated: " + std::to_string(file.bytes->size()) + " of at least " +
                                                 std::to_string(file.headers->bytes) + " bytes");
        }
        if (!file.headers->fits) {
            return fault(cause::filearchitecture, is64bit ? "for 32-bit programs" : "for 64-bit programs");
        }
        if (managed != file.headers->managed) {
            return fault(cause::fileforeign, managed ? "not a managed assembly" : "a managed assembly");
        }
        if (!compare(file)) {
            return fault(cause::filedamaged, "its content differs from the file that was built");
        }
        if (isfrominternet(file.path)) {
            fault(cause::fileblocked, "");
        }
        if (isonnetwork(file.path)) {
            fault(cause::fileremote, "");
        }
        if (managed && OrvelLoginClientCLR::withoutLongPathPrefix(file.path).size() >= MAX_PATH) {
            fault(cause::pathlong, "");
        }
        return file;
    }

    // Compares a file with those that were built. Returns whether it is intact, as far as that is known.
    bool compare(const libraryfile& file) {
        const std::string& content = file.headers->content;
        const std::string digest = sha256(content);
        bool known = false;
        bool sameshape = false;
        for (const shippedfile& row : shippedfiles) {
            if (file.name == row.name) {
                if (digest == row.digest) {
                    return true;
                }
                known = true;
                sameshape = sameshape || row.bytes == content.size();
            }
        }
        if (!known) {
            return true;
        }
        if (isownfile(file.name)) {
            if (file.version.empty() || file.version == ownversion) {
                return false;
            }
            found.add(area::files, cause::fileversion,
                      file.name + " (" + file.version + " instead of " + ownversion + ")");
            return true;
        }
        if (!sameshape) {
            found.add(area::files, cause::runtimebuild, file.name);
        }
        return !sameshape;
    }

    // Checks one of the library's DLLs and the runtime DLLs that it needs. Returns its version.
    std::string checklibrarydll(const librarydll& dll) {
        const std::optional<libraryfile> library = inspect(dll.file, false, area::files);
        std::vector<libraryfile> runtimedlls;
        for (const std::string& name : shippednames()) {
            if (dll.needsruntimedlls && !isownfile(name)) {
                if (const std::optional<libraryfile> runtime = inspect(name, false, area::files)) {
                    runtimedlls.push_back(*runtime);
                }
            }
        }
        if (!library) {
            return std::string();
        }
        const trial loading = tryloading(library->path, dll.exported);
        if (!loading.succeeded && found.markof(area::files) != grade::fail) {
            found.add(area::files, cause::libraryfails,
                      std::string(dll.file) + ": " + loading.text + (loading.finished ? "" : culprit(runtimedlls)));
        }
        return library->version;
    }

    // The runtime DLL that crashes or hangs by itself, and not because of another one that it imports.
    static std::string culprit(std::vector<libraryfile> files) {
        files.erase(std::remove_if(files.begin(), files.end(),
                                   [](const libraryfile& file) { return tryloading(file.path, "").finished; }),
                    files.end());
        for (const libraryfile& file : files) {
            if (std::none_of(files.begin(), files.end(), [&file](const libraryfile& other) {
                    return other.name != file.name && file.bytes->find(other.name) != std::string::npos;
                })) {
                return "; so does " + file.name + " alone";
            }
        }
        return std::string();
    }

    void checkmanager(bool partusable, const char* library) {
        std::string lines;
        if (!partusable) {
            found.add(area::framework, cause::nottried, std::string(managedpart) + " cannot be used");
        } else {
            const trial opening =
                tryassemblies(folder + L"\\" + toutf16(managedpart), folder + L"\\" + toutf16(library));
            const auto startswith = [&opening](const char* text) { return opening.text.rfind(text, 0) == 0; };
            if (opening.succeeded) {
                lines = opening.text;
                found.good(area::framework, toutf8lossy(std::wstring_view(OrvelLoginClientCLR::runtimeVersion)) +
                                                " starts and runs the managed part");
            } else {
                found.add(area::framework,
                          !opening.finished || startswith("the .NET Framework 4 runtime") ? cause::frameworkfails
                          : startswith("these two files")                                 ? cause::versionsmixed
                                                                                          : cause::managedpartfails,
                          opening.text);
            }
        }
        for (const char* name : assemblies) {
            const std::optional<libraryfile> assembly = inspect(assemblyfile(name), true, area::manager);
            if (assembly && !lines.empty()) {
                interpret(name, lines, assembly->path);
            }
        }
        if (lines.empty()) {
            found.add(area::manager, cause::nottried, "the managed part does not run");
        }
        found.good(area::manager,
                   std::string("version ") + managerversion + ", has all members that the library calls");
    }

    // Adds what the managed part reports about one assembly. For the format of `lines` see login/managed/Inspection.cs.
    void interpret(const std::string& name, const std::string& lines, const std::wstring& expected) {
        std::istringstream stream(lines);
        for (std::string line; std::getline(stream, line);) {
            const std::size_t kindat = line.find('\t') + 1;
            const std::size_t textat = line.find('\t', kindat) + 1;
            if (line.substr(0, kindat - 1) != name) {
                continue;
            }
            const std::string kind = line.substr(kindat, textat - kindat - 1);
            const std::string text = line.substr(textat);
            const auto add = [&](cause why, const std::string& detail) {
                found.add(area::manager, why, assemblyfile(name) + " (" + detail + ")");
            };
            if (kind == "name" && text != name) {
                add(cause::fileforeign, "the assembly " + text);
            } else if (kind == "version" && text != managerversion) {
                add(cause::managerversion, text + " instead of " + managerversion);
            } else if (kind == "file" && !samefile(toutf16(text), expected)) {
                add(cause::assemblyelsewhere, text);
            } else if (kind == "lacks") {
                found.add(area::manager, cause::membersmissing, text);
            } else if (kind == "failure") {
                add(cause::assemblyfails, text);
            }
        }
    }

    const std::wstring folder;
    findings& found;
};

}  // namespace

void checklibrary(const std::wstring& folder, findings& found) {
    if ((GetFileAttributesW(folder.c_str()) & FILE_ATTRIBUTE_DIRECTORY) == 0 ||
        GetFileAttributesW(folder.c_str()) == INVALID_FILE_ATTRIBUTES) {
        found.add(area::files, cause::foldermissing, toutf8lossy(folder));
        for (const area where : {area::framework, area::manager}) {
            found.add(where, cause::nottried, "there is no such folder");
        }
        return;
    }
    check(folder, found).run();
}

commandresult listfiles(const std::wstring& folder) {
    commandresult result = {0, std::string(), json::array()};
    std::vector<std::vector<std::string>> lines = {{"FILE", "VERSION", "BYTES", "SHA-256", "REMARKS"}};
    std::vector<std::string> names = shippednames();
    for (const char* name : assemblies) {
        names.push_back(assemblyfile(name));
    }
    for (const std::string& name : names) {
        const libraryfile file = open(folder, name);
        if (file.bytes) {
            json row = {{"file", name},
                        {"version", file.version},
                        {"bytes", file.bytes->size()},
                        {"sha256", sha256(*file.bytes)},
                        {"remarks", json::array()}};
            std::string remarks;
            for (const auto& [remark, applies] : {std::pair{"signed", file.headers && file.headers->issigned},
                                                  std::pair{"from the internet", isfrominternet(file.path)},
                                                  std::pair{"on a network drive", isonnetwork(file.path)}}) {
                if (applies) {
                    row["remarks"].push_back(remark);
                    remarks += (remarks.empty() ? "" : ", ") + std::string(remark);
                }
            }
            lines.push_back({name, file.version, row["bytes"].dump(), row["sha256"], remarks});
            result.data.push_back(std::move(row));
        }
    }
    result.text = table(lines);
    return result;
}

std::vector<std::string> programswithlibrary() {
    std::vector<std::string> rows;
    const orvsecutils::filehandle processes(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W process = {};
    process.dwSize = sizeof process;
    for (BOOL more = Process32FirstW(processes.get(), &process); more;
         more = Process32NextW(processes.get(), &process)) {
        // Fails for the processes of other users and of other architectures.
        const orvsecutils::filehandle modules(
            CreateToolhelp32Snapshot(TH32CS_SNAPMODULE | TH32CS_SNAPMODULE32, process.th32ProcessID));
        MODULEENTRY32W module = {};
        module.dwSize = sizeof module;
        for (BOOL next = Module32FirstW(modules.get(), &module); next; next = Module32NextW(modules.get(), &module)) {
            for (const librarydll& dll : {classdll, functiondll}) {
                if (equalsignorecase(toutf8lossy(std::wstring_view(module.szModule)), dll.file)) {
                    rows.push_back(toutf8lossy(std::wstring_view(process.szExeFile)) + " (" +
                                   std::to_string(process.th32ProcessID) +
                                   "): " + toutf8lossy(std::wstring_view(module.szExePath)));
                }
            }
        }
    }
    return rows;
}

}  // namespace orvdiag
