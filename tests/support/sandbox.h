#pragma once

#include <windows.h>

#include <locale>
#include <regex>

#include "tests/support/program.h"
#include "tests/support/rawkey.h"
#include "tests/support/system.h"
#include "tests/support/temporary_folder.h"

/// Separates all digits, to detect numbers that are formatted with the host's locale.
struct digitgrouping : std::numpunct<char> {
    std::string do_grouping() const override { return "\1"; }
};

/// A profile folder and a logging switch for the programs that a test starts. Restores what it changes. Both belong to
/// the user, so tests that read them must not run at the same time. Wine lets the profile be moved to a folder of the
/// test's own; on Windows it is the user's, where the self-test has made sure that the product keeps nothing.
class sandbox {
public:
    sandbox() {
        removecompany(L"Orvel");  // what was set by hand, or by the demo
        if (onwine()) {
            moveprofile(profile);
        } else {
            remove_all(profile / "Orvel");
        }
    }

    ~sandbox() {
        removecompany(L"Orvel");
        if (onwine()) {
            RegDeleteKeyValueW(HKEY_CURRENT_USER, shellfolders, profileid);
        } else {
            std::error_code ignored;
            remove_all(profile / "Orvel", ignored);
        }
    }

    sandbox(const sandbox&) = delete;
    sandbox& operator=(const sandbox&) = delete;

    /// Only under Wine.
    void moveprofile(const std::filesystem::path& folder) {
        RegSetKeyValueW(HKEY_CURRENT_USER, shellfolders, profileid, REG_SZ, folder.c_str(),
                        (folder.native().size() + 1) * sizeof(wchar_t));
    }

    void setswitch(HKEY hive, DWORD value, DWORD type = REG_DWORD) {
        rawkey(hive, view64, switchkey).write(L"Logging", type, {reinterpret_cast<char*>(&value), sizeof value});
    }

    std::filesystem::path folder() const { return profile / "Orvel" / "LoginManager"; }
    std::filesystem::path log() const { return folder() / "orvsec.log"; }

    program start(const char* executable, const std::wstring& arguments) const {
        return program(executable, arguments, temporary.path);
    }

    program::result run(const char* executable, const std::wstring& arguments) const {
        return start(executable, arguments).wait();
    }

    static constexpr char switchkey[] = "software\\Orvel\\LoginManager\\Debug";

    /// The lines of the log, with TIME for each well-formed time.
    std::vector<std::string> logged() const {
        static const std::regex time("\\d\\d/\\d\\d/\\d{4} \\d\\d:\\d\\d:\\d\\d[+-]\\d{4}");
        return lines(std::regex_replace(contentof(log()), time, "TIME"));
    }

    /// The text's lines. Each must end in CR LF.
    static std::vector<std::string> lines(const std::string& text) {
        std::vector<std::string> result;
        for (std::size_t from = 0, to; (to = text.find("\r\n", from)) != std::string::npos; from = to + 2) {
            result.push_back(text.substr(from, to - from));
        }
        return result;
    }

private:
    static constexpr wchar_t shellfolders[] =
        L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
    static constexpr wchar_t profileid[] = L"{5E6C858F-0E22-4760-9AFE-EA3317B67173}";

    const temporary_folder temporary;
    const std::filesystem::path profile = onwine() ? temporary.path : std::filesystem::path(_wgetenv(L"USERPROFILE"));
};
