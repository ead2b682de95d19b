#include "tools/orvdiag/report.h"

#include <windows.h>

#include <exception>
#include <filesystem>

#include "orvsecutils/log/appendfile.h"
#include "orvsecutils/log/recordheader.h"
#include "orvsecutils/log/walltime.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"
#include "tools/orvdiag/facts.h"
#include "tools/orvdiag/logging.h"
#include "tools/orvdiag/logincheck.h"
#include "tools/orvdiag/logview.h"
#include "tools/orvdiag/settingslist.h"
#include "tools/orvdiag/text.h"

namespace orvdiag {

namespace {

constexpr std::size_t reportedlines = 200;

constexpr char personaldata[] =
    "This report contains personal data: the names of the user and the computer, folders, the address of a network\n"
    "adapter, settings, and what programs wrote to the log. Settings whose names look like passwords, tokens or keys\n"
    "are shown as \"(hidden)\". Give it only to the people who investigate the fault.\n";

struct section {
    const char* title;
    const char* name;  // in JSON
    commandresult (*run)(const std::string& folder);
};

constexpr section sections[] = {
    {"Is the login library complete?", "login", [](const std::string& folder) { return checklogin(folder); }},
    {"Windows and .NET Framework", "versions", [](const std::string&) { return systemversions(); }},
    {"Machine and user", "facts", [](const std::string&) { return facts(); }},
    {"Settings", "settings", [](const std::string&) { return listing(allstoredvalues(), true); }},
    {"Logging", "logging", [](const std::string&) { return logging(std::string()); }},
    {"The log's last lines, at most 200", "log", [](const std::string&) { return lastlines(reportedlines); }},
};

// If one section fails, the others are still written.
commandresult runsection(const section& row, const std::string& folder) {
    try {
        return row.run(folder);
    } catch (const std::exception& failed) {
        return {1, std::string("This part failed: ") + failed.what() + "\n", failed.what()};
    }
}

// Returns the system's message if the file cannot be written, else an empty text.
std::string writefile(const std::wstring& path, const std::string& bytes) {
    const orvsecutils::filehandle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    const bool complete = file &&
                          WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
                          written == bytes.size();
    return complete ? std::string() : systemmessage(GetLastError());
}

}  // namespace

commandresult writereport(const std::string& file, const std::string& folder, bool asjson) {
    const std::array<char, 24> time = orvsecutils::timetext(orvsecutils::currentwalltime());
    const std::string written(time.begin(), time.end());
    std::string text = std::string("Report of orvdiag ") + ORVDIAG_VERSION + ", " + written + "\n\n" + personaldata;
    json data = {
        {"tool", std::string("orvdiag ") + ORVDIAG_VERSION}, {"written", written}, {"personaldata", personaldata}};
    for (const section& row : sections) {
        const commandresult result = runsection(row, folder);
        text += std::string("\n== ") + row.title + "\n\n" + result.text;
        data[row.name] = result.data;
    }
    if (asjson) {
        text = data.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
    }
    const std::wstring path = std::filesystem::absolute(orvsecutils::toutf16(file)).native();
    const std::string utf8path = toutf8lossy(path);
    const std::string obstacle = writefile(path, orvsecutils::withcrlf(toutf8lossy(text)));
    if (!obstacle.empty()) {
        return {1,
                "The report cannot be written to " + utf8path + ": " + obstacle + "\n",
                {{"file", utf8path}, {"obstacle", obstacle}}};
    }
    return {0, "Report: " + utf8path + "\n" + personaldata, {{"file", utf8path}, {"personaldata", personaldata}}};
}

}  // namespace orvdiag
