#pragma once

#include "orvsecutils/platform/platform.h"

namespace orvsecutils {

/// Implements `platform` with Win32. The contract of each operation is in platform.h.
class platformwindows : public platform {
public:
    int uilanguage() const override;
    std::string computername() const override;
    std::string username() const override;
    std::string osversion() const override;
    std::string languageids() const override;
    std::string processorinfo() const override;
    std::string profilefolder() const override;
    bool createdirectory(const std::string& path) const override;
    std::string appendpath(const std::string& path, const std::string& more) const override;
    std::string executablename() const override;
    std::string parentfolder(const std::string& path) const override;
    std::string filename(const std::string& path) const override;
    settingsmap readsettings(settingsscope scope, const settingsdef& definition) const override;
    bool writesettings(settingsscope scope, const settingsdef& definition, const settingsmap& values) const override;
    std::string defaultsettingsroot() const override;
    std::string executablefolder() const override;
    int runprocess(const std::string& file, const std::vector<std::string>& arguments) const override;
    bool pathexists(const std::string& path) const override;
    void deletefile(const std::string& path) const override;
    std::string localappdatafolder() const override;
    std::string roamingappdatafolder() const override;
    std::string programfilesfolder() const override;
    std::string programfilesx86folder() const override;
    std::string macaddress() const override;
    bool filetimes(const std::string& path, std::int64_t& creation, std::int64_t& lastaccess,
                   std::int64_t& lastwrite) const override;
    bool filetimes(const std::string& path, std::int64_t& creation, std::int64_t& lastaccess,
                   std::int64_t& lastwrite) override;
    bool findfiles(const std::string& pattern, std::vector<fileentry>& entries) const override;
    bool readinivalue(const std::string& file, const std::string& section, const std::string& key,
                      std::string& value) const override;
    bool serviceconfig(const std::string& service, serviceconfiguration& configuration) const override;
    bool settingsexist(settingsscope scope, const settingsdef& definition) const override;
    std::string publicfolder() const override;
    bool directoryexists(const std::string& path) const override;
};

}  // namespace orvsecutils
