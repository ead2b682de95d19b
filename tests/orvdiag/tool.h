#pragma once

#include <windows.h>

#include <gmock/gmock.h>
#include <sddl.h>

#include "orvsecutils/platform/unicode.h"
#include "tests/support/sandbox.h"
#include "tools/orvdiag/storedvalues.h"

inline const std::string one("\1\0\0\0", 4), two("\2\0\0\0", 4);
inline const std::string zero(4, '\0');
inline const std::string broken = bytesof({L"x\xDC00\0", 3});
inline constexpr wchar_t noaccess[] = L"D:", fullaccess[] = L"D:(A;;GA;;;WD)";
constexpr auto user = orvdiag::registrylocation::user, machine = orvdiag::registrylocation::machine,
               machine32 = orvdiag::registrylocation::machine32;

/// Runs the tool with settings and a log of the test's own.
class Orvdiag : public testing::Test {
protected:
    program::result run(const std::wstring& arguments) { return box.run("orvdiag.exe", arguments); }

    /// `rights`: a security descriptor as a string.
    static void setaccess(HKEY hive, const std::string& group, const wchar_t* rights) {
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        ConvertStringSecurityDescriptorToSecurityDescriptorW(rights, SDDL_REVISION_1, &descriptor, nullptr);
        HKEY key = nullptr;
        RegOpenKeyExW(hive, orvsecutils::toutf16(groups + group).c_str(), 0, WRITE_DAC | view64, &key);
        RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptor);
        RegCloseKey(key);
        LocalFree(descriptor);
    }

    void plant(orvdiag::registrylocation location, const std::wstring& name, DWORD type, const std::string& data,
               const std::string& group = "Debug") {
        rawkey(location == user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE, location == machine32 ? view32 : view64,
               groups + group)
            .write(name, type, data);
    }

    static inline const std::string groups = "software\\Orvel\\LoginManager\\";
    sandbox box;
    const std::filesystem::path profile = box.folder().parent_path().parent_path();
    const std::string log = orvsecutils::toutf8(box.log().native());
};
