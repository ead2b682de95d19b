#include "tools/orvdiag/report.h"

#include <windows.h>

#include <array>
#include <exception>

#include "orvsecutils/log/appendfile.h"
#include "orvsecutils/log/recordheader.h"
#include "orvsecutils/log/walltime.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"
#include "tools/orvdiag/check.h"
#include "tools/orvdiag/childprocess.h"
#include "tools/orvdiag/diskfile.h"
#include "tools/orvdiag/facts.h"
#include "tools/orvdiag/libraryfiles.h"
#include "tools/orvdiag/logging.h"
#include "tools/orvdiag/logview.h"
#include "tools/orvdiag/output.h"
#include "tools/orvdiag/settingslist.h"
#include "tools/orvdiag/text.h"

namespace orvdiag {

namespace {

constexpr std::size_t reportedlines = 200;
// More than the check's trials take together, of which each has a limit of its own.
constexpr DWORD partseconds = 240;

constexpr const char* questions[] = {"What was done?", "What was expected?", "What happened?"};

constexpr char personaldata[] =
    "This report contains personal data: the names of the user and the computer, folders, the address of a network\n"
    "adapter, settings, and what programs wrote to the log. Values that look like passwords, tokens or keys are\n"
    "shown as \"(hidden)\". Read it before you send it, and give it only to support.\n";

struct part {
    const char* title;
    const char* name;  // in JSON
    commandresult (*run)(const std::wstring& folder);
};

constexpr part parts[] = {
    {"Summary", "check", check},
    {"Files of the library", "files", listfiles},
    {"Machine and user", "facts", [](const std::wstring&) { return facts(); }},
    {"Settings", "settings", [](const std::wstring&) { return listing(allstoredvalues(), true); }},
    {"Logging", "logging", [](const std::wstring&) { return logging(std::string()); }},
    {"The log's last lines, at most 200", "log", [](const std::wstring&) { return lastlines(reportedlines); }},
};

// The file that is being written, beside the one that it replaces at the end.
class reportfile {
public:
    explicit reportfile(const std::wstring& pathIn) : path(pathIn), partial(pathIn + L".partial") {
        // Seen before the parts are run: a folder of that name, or a file that cannot be replaced.
        const orvsecutils::filehandle old(CreateFileW(path.c_str(), GENERIC_WRITE | DELETE,
                                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (old || GetLastError() == ERROR_FILE_NOT_FOUND) {
            file = orvsecutils::filehandle(CreateFileW(partial.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                                       CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        }
        fail(!file);
    }

    bool isopen() const { return static_cast<bool>(file); }

    void write(const std::string& text) {
        const std::string bytes = orvsecutils::withcrlf(text);
        DWORD written = 0;
        fail(!WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
             written < bytes.size());
    }

    // What a part writes before it fails is removed again, because half of a JSON value would spoil the file.
    void run(const part& row, const std::wstring& folder, bool asjson) {
        const LARGE_INTEGER none = {};
        LARGE_INTEGER start = {};
        SetFilePointerEx(file.get(), none, &start, FILE_CURRENT);
        const std::string name = row.name;
        const childprocess child =
            runchild({partargument, std::wstring(name.begin(), name.end()), asjson ? L"json" : L"text", folder},
                     file.get(), nullptr, partseconds);
        if (!child.ended || child.status != 0) {
            const std::string reason = child.ended ? "ended with status " + std::to_string(child.status) : child.reason;
            SetFilePointerEx(file.get(), start, nullptr, FILE_BEGIN);
            SetEndOfFile(file.get());
            write(asjson ? json({{"failure", reason}}).dump() : "This part failed: " + reason + "\n");
        }
    }

    // Puts the file in place. Returns the first failure of the system; empty if there was none.
    std::string finish() {
        file = {};
        if (failure == 0) {
            fail(!MoveFileExW(partial.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING));
        }
        return failure == 0 ? std::string() : systemmessage(failure);
    }

private:
    void fail(bool failed) { failure = failed && failure == 0 ? GetLastError() : failure; }

    const std::wstring path;
    const std::wstring partial;
    orvsecutils::filehandle file;
    DWORD failure = 0;
};

}  // namespace

commandresult writereport(const std::string& fileIn, const std::wstring& folder, bool asjson) {
    const std::string defaultname = asjson ? "orvdiag-report.json" : "orvdiag-report.txt";
    std::wstring path = fullpath(fileIn.empty() ? defaultname : fileIn);
    std::optional<reportfile> file(path);
    if (!file->isopen() && fileIn.empty()) {
        wchar_t temporary[MAX_PATH + 1] = {};
        GetTempPathW(MAX_PATH + 1, temporary);
        path = temporary + orvsecutils::toutf16(defaultname);
        file.emplace(path);
    }
    if (file->isopen()) {
        const std::array<char, 24> time = orvsecutils::timetext(orvsecutils::currentwalltime());
        const std::string tool = "orvdiag " ORVDIAG_VERSION;
        const std::string written(time.begin(), time.end());
        const std::string head =
            json({{"tool", tool}, {"written", written}, {"questions", questions}, {"personaldata", personaldata}})
                .dump(2);
        file->write(asjson ? head.substr(0, head.rfind('\n')) : "Report of " + tool + ", " + written + "\n");
        for (const part& row : parts) {
            file->write(asjson ? ",\n  \"" + std::string(row.name) + "\": "
                               : std::string("\n== ") + row.title + "\n\n");
            file->run(row, folder, asjson);
            if (!asjson && &row == parts) {
                file->write("\n== Questions\n\n");
                for (const char* question : questions) {
                    file->write(question + std::string("\n\n\n"));
                }
                file->write(personaldata);
            }
        }
        file->write(asjson ? "}\n" : "");
    }
    const std::string utf8path = toutf8lossy(path);
    const std::string obstacle = file->finish();
    if (!obstacle.empty()) {
        return {1,
                "The report cannot be written to " + utf8path + ": " + obstacle + "\n",
                {{"file", utf8path}, {"obstacle", obstacle}}};
    }
    return {0, "Report: " + utf8path + "\n" + personaldata, {{"file", utf8path}, {"personaldata", personaldata}}};
}

int runpart(int count, wchar_t** arguments) {
    for (const part& row : parts) {
        if (count == 5 && toutf8lossy(std::wstring_view(arguments[2])) == row.name) {
            const commandresult result = row.run(arguments[4]);
            const bool asjson = arguments[3] == std::wstring(L"json");
            return print(asjson ? jsontext(result.data) : result.text) ? 0 : 2;
        }
    }
    return 2;
}

}  // namespace orvdiag
