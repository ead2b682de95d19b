#include "tools/orvdiag/logincheck.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/unicode.h"
#include "runtimedlls.h"
#include "tools/orvdiag/image.h"
#include "tools/orvdiag/text.h"
#include "tools/orvdiag/trial.h"

namespace orvdiag {

using orvsecutils::toutf16;

namespace {

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

enum class grade { ok, warn, fail };

struct finding {
    std::string subject;
    grade result;
    std::string text;

    // Keeps the worst grade and all texts.
    void add(grade worse, const std::string& more) {
        result = std::max(result, worse);
        text += (text.empty() || more.empty() ? "" : "; ") + more;
    }
};

struct file {
    finding found;
    std::string version;  // from its version resource
    std::string gcc;
    std::size_t bytes;

    bool usable() const { return found.result != grade::fail; }
};

class check {
public:
    explicit check(std::filesystem::path folderIn) : folder(std::move(folderIn)) {}

    std::vector<finding> run() {
        // A folder may contain either DLL or both. If it contains neither, orvellogin.dll is reported as missing.
        const bool hasfunctiondll = exists(folder / functiondll.file);
        const bool hasclassdll = !hasfunctiondll || exists(folder / classdll.file);
        const librarydll& library = hasclassdll ? classdll : functiondll;
        if (hasfunctiondll && hasclassdll) {
            checklibrary(functiondll);
        }
        const std::string version = checklibrary(library);
        file part = checkfile(managedpart, true);
        if (part.usable() && !version.empty() && part.version != version) {
            part.found.add(grade::warn, "not the same version as the library, " + version);
        }
        findings.push_back(part.found);
        checkassemblies(part, library.file);
        return std::move(findings);
    }

private:
    file checkfile(const std::string& name, bool managed) const {
        const std::filesystem::path path = folder / toutf16(name);
        file result = {{name, grade::ok, {}}, {}, {}, 0};
        const auto failure = [&result](const std::string& text) {
            result.found.add(grade::fail, text);
            return result;
        };
        std::ifstream stream(path, std::ios::binary);
        if (!stream) {
            const DWORD reason = GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES ? GetLastError() : 0;
            return failure(reason == ERROR_FILE_NOT_FOUND || reason == ERROR_PATH_NOT_FOUND
                               ? "is missing"
                               : "exists but cannot be read");
        }
        // The whole file, because the compiler's name may be anywhere in it, and its size tells whether it is
        // truncated.
        const std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
        const std::optional<image> headers = readimage(bytes);
        if (!headers) {
            return failure("is damaged or not a DLL");
        }
        if (!headers->loadable) {
            return failure(is64bit ? "is for 32-bit programs; this is the orvdiag for 64-bit ones"
                                   : "is for 64-bit programs; this is the orvdiag for 32-bit ones");
        }
        if (headers->bytes > bytes.size()) {
            return failure("is cut short: " + std::to_string(bytes.size()) + " of at least " +
                           std::to_string(headers->bytes) + " bytes");
        }
        if (managed != headers->managed) {
            return failure(managed ? "is not a managed assembly" : "is a managed assembly, not this library");
        }
        result.version = fileversion(path);
        result.gcc = gccversion(bytes);
        result.bytes = bytes.size();
        result.found.add(grade::ok, result.version.empty() ? "" : "file version " + result.version);
        return result;
    }

    // Checks one of the library's DLLs and the runtime DLLs that it needs. Returns its version.
    std::string checklibrary(const librarydll& dll) {
        file library = checkfile(dll.file, false);
        if (library.usable()) {
            const trial loading = tryloading(folder / dll.file, dll.exported);
            library.found.add(loading.succeeded ? grade::ok : grade::fail,
                              loading.succeeded ? "loads" : "cannot be loaded: " + loading.text);
        }
        findings.push_back(library.found);
        for (const runtimedll& shipped : runtimedlls) {
            if (dll.needsruntimedlls) {
                file runtime = checkfile(shipped.name, false);
                if (!library.gcc.empty() && !runtime.gcc.empty() && !samegcc(library.gcc, runtime.gcc)) {
                    runtime.found.add(grade::warn, "built by a different GCC (" + runtime.gcc + ") than the library (" +
                                                       library.gcc + ")");
                } else if (runtime.usable() && runtime.bytes != shipped.bytes) {
                    // The size is compared because not every DLL names its compiler.
                    runtime.found.add(grade::warn,
                                      "not the file that ships with the library: " + std::to_string(runtime.bytes) +
                                          " bytes instead of " + std::to_string(shipped.bytes));
                }
                findings.push_back(runtime.found);
            }
        }
        return library.version;
    }

    void checkassemblies(const file& part, const char* library) {
        finding runtime = {".NET Framework runtime v4.0.30319", grade::ok, {}};
        std::string lines;
        if (part.usable()) {
            const trial opening = tryassemblies(folder / managedpart, folder / library);
            runtime.add(opening.succeeded ? grade::ok : grade::fail,
                        opening.succeeded ? "starts, and runs the managed part" : opening.text);
            lines = opening.succeeded ? opening.text : std::string();
        } else {
            const bool missing = !exists(folder / managedpart);
            runtime.add(grade::fail,
                        std::string("not tried: the managed part is ") + (missing ? "missing" : "damaged"));
        }
        findings.push_back(runtime);
        for (const char* name : assemblies) {
            const std::string path = std::string("OrvelLoginManagerClient\\") + name + ".dll";
            file assembly = checkfile(path, true);
            if (assembly.usable() && lines.empty()) {
                assembly.found.add(grade::ok, "not opened, as the managed part does not run");
            } else if (assembly.usable()) {
                interpret(name, lines, folder / toutf16(path), assembly.found);
            }
            findings.push_back(assembly.found);
        }
    }

    // Adds what the managed part reports about one assembly. For the format of `lines` see login/managed/Inspection.cs.
    static void interpret(const std::string& name, const std::string& lines, const std::filesystem::path& expected,
                          finding& found) {
        std::string lacking;
        bool readable = true;
        std::istringstream stream(lines);
        for (std::string line; std::getline(stream, line);) {
            const std::size_t kindat = line.find('\t') + 1;
            const std::size_t textat = line.find('\t', kindat) + 1;
            if (line.substr(0, kindat - 1) != name) {
                continue;
            }
            const std::string kind = line.substr(kindat, textat - kindat - 1);
            const std::string text = line.substr(textat);
            if (kind == "name" && text != name) {
                found.add(grade::fail, "holds another assembly, " + text);
            } else if (kind == "version") {
                found.add(text == managerversion ? grade::ok : grade::warn,
                          "assembly version " + text +
                              (text == managerversion ? "" : std::string(" instead of ") + managerversion));
            } else if (kind == "file" && !equalsignorecase(text, toutf8lossy(expected.native()))) {
                found.add(grade::warn, "the runtime uses a different file, " + text);
            } else if (kind == "lacks") {
                lacking += (lacking.empty() ? "lacks " : ", ") + text;
            } else if (kind == "failure") {
                readable = false;
                found.add(grade::fail, "cannot be used by the runtime: " + text);
            }
        }
        if (!lacking.empty()) {
            found.add(grade::fail, lacking);
        } else if (readable && name == assemblies[0]) {
            found.add(grade::ok, "has all members that the library calls");
        }
    }

    const std::filesystem::path folder;
    std::vector<finding> findings;
};

}  // namespace

commandresult checklogin(const std::string& folderIn) {
    const std::filesystem::path folder =
        std::filesystem::absolute(
            toutf16(folderIn.empty() ? orvsecutils::currentplatform().executablefolder() : folderIn))
            .lexically_normal();
    commandresult result = {0, "Folder: " + toutf8lossy(folder.native()) + "\n", json::object()};
    std::vector<finding> findings = {{"folder", grade::fail, "there is no such folder"}};
    if (is_directory(folder)) {
        findings = check(folder).run();
    }
    static constexpr const char* gradetexts[] = {"ok", "warn", "FAIL"};
    grade worst = grade::ok;
    json rows = json::array();
    std::vector<std::vector<std::string>> lines;
    for (const finding& row : findings) {
        const char* gradetext = gradetexts[static_cast<std::size_t>(row.result)];
        worst = std::max(worst, row.result);
        lines.push_back({gradetext, row.subject, oneline(row.text)});
        rows.push_back({{"result", gradetext}, {"subject", row.subject}, {"text", row.text}});
    }
    static constexpr const char* verdicts[] = {"Everything is in its place.",
                                               "Everything is in its place, but see the lines with warn.",
                                               "Not everything is in its place; see the lines with FAIL."};
    const char* verdict = verdicts[static_cast<std::size_t>(worst)];
    result.status = worst == grade::fail ? 1 : 0;
    result.text += table(lines) + verdict + "\n";
    result.data = {{"folder", toutf8lossy(folder.native())}, {"verdict", verdict}, {"findings", rows}};
    return result;
}

}  // namespace orvdiag
