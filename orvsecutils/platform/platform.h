#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "orvsecutils/settings/setting.h"

/// @file
/// The interface to the operating system.
namespace orvsecutils {

// Only declared: settingsdef itself calls the platform, so including its header would be a cycle.
class settingsdef;
enum class settingsscope : std::int32_t;

/// One entry of a folder.
struct fileentry {
    std::string name;        ///< without the folder
    std::int64_t lastwrite;  ///< as in platform::filetimes()
};

/// The configuration of a service; the numbers are those of the Win32 service configuration.
struct serviceconfiguration {
    std::uint32_t servicetype;   ///< a combination of SERVICE_WIN32_OWN_PROCESS and the like
    std::uint32_t starttype;     ///< SERVICE_AUTO_START and the like
    std::uint32_t errorcontrol;  ///< SERVICE_ERROR_NORMAL and the like
    std::string binarypathname;  ///< command line of the service
    std::string loadordergroup;  ///< empty for none
    std::uint32_t tagid;         ///< position in the load order group; 0 for none
    std::string dependencies;    ///< names of services, separated by zero characters; group names are prefixed with "+"
    std::string servicestartname;  ///< account that the service runs under
    std::string displayname;       ///< name that user interfaces show
};

/// The library's interface to the operating system: the calling process, its user and its machine.
///
/// Strings are UTF-8 in both directions. If an argument is not valid UTF-8, or a string from the system is not valid
/// UTF-16, the operation throws `std::range_error` ("bad conversion"). An argument ends at its first zero character;
/// only strings that writesettings() writes are stored completely.
///
/// Operations do not say why they failed: a returned string is empty, a boolean false, and outputs are untouched unless
/// the operation says otherwise. The only other exceptions are `std::bad_alloc`, `std::length_error`, and
/// `platformerror` if there is no memory for the buffer of a system call.
///
/// Any thread may call; nothing is kept between calls.
///
/// Paths of files may use either separator, but the operations on the text of a path (9, 11, 12) need backslashes. The
/// system finds no file whose path exceeds 259 UTF-16 code units (247 for a folder to be created), unless the path
/// starts with `\\?\`, or the machine allows long paths (Windows 10 1607 and later) and the host's manifest declares
/// `longPathAware`. Operations 9, 10 and 16 are limited to 259 units in any case.
///
/// The number at the beginning is the operation's slot in the virtual table; slot 0 is the destructor. The library does
/// not export this class, but the order of the slots is part of its definition, so that an implementation can be built
/// separately from its callers: new operations are added at the end, and existing ones keep their slots.
/// platformwindows.cpp has the same order.
class platform {
public:
    virtual ~platform() = default;

    /// 1. Language of the user's regional format, as numbered by languagecode(). Windows may be displayed in a
    /// different language.
    virtual int uilanguage() const = 0;

    /// 2. DNS host name of the machine, without its domain.
    virtual std::string computername() const = 0;

    /// 3. Name of the user, without a domain; empty if it has more than 255 UTF-16 code units.
    virtual std::string username() const = 0;

    /// 4. "major,minor,build,service pack major,service pack minor", in decimal. From Windows 8.1 on, a program whose
    /// manifest does not declare compatibility gets 6.2.
    virtual std::string osversion() const = 0;

    /// 5. "user,system": the default language identifiers of both, in decimal.
    virtual std::string languageids() const = 0;

    /// 6. "count,architecture,level" of the processors as a process of this bitness sees them, in decimal.
    virtual std::string processorinfo() const = 0;

    /// 7. The user's profile folder.
    virtual std::string profilefolder() const = 0;

    /// 8. Creates a folder and its missing parents. True if the folder exists afterwards, whoever created it; false if
    /// a file has that name. Parents created before a failure remain.
    virtual bool createdirectory(const std::string& path) const = 0;

    /// 9. `path` and `more` joined by one separator, with "." and ".." resolved. If `more` names a drive or a UNC
    /// share, it replaces `path`. Empty if `path`, `more` or the result exceeds 259 UTF-16 code units.
    virtual std::string appendpath(const std::string& path, const std::string& more) const = 0;

    /// 10. File name of the process's executable, without its folder; empty if its full path exceeds 259 UTF-16 code
    /// units.
    virtual std::string executablename() const = 0;

    /// 11. `path` without its last component and the separator before it. The root of a drive is returned unchanged; a
    /// path of one component becomes empty. With a trailing separator, only that separator is removed.
    virtual std::string parentfolder(const std::string& path) const = 0;

    /// 12. The last component of `path`, including a trailing separator; for the root of a drive, the whole path.
    virtual std::string filename(const std::string& path) const = 0;

    /// 13. The values of a group in one scope. Empty if the group does not exist; malformed values and values of
    /// unknown types are left out. Reads the 64-bit view of the registry.
    virtual settingsmap readsettings(settingsscope scope, const settingsdef& definition) const = 0;

    /// 14. Writes `values` into a group, creating it if it does not exist; other values of the group are kept. Names
    /// and strings are converted first: if one is not valid UTF-8, nothing is written. False if the group cannot be
    /// opened or a value cannot be written, such as any list; the other values are still written. Strings are written
    /// with embedded zero characters, but reading stops at the first one. Writes the process's own view of the
    /// registry, so readsettings() of a 32-bit process does not see a group that was written to the machine scope.
    virtual bool writesettings(settingsscope scope, const settingsdef& definition, const settingsmap& values) const = 0;

    /// 15. The root key of settings whose definition does not name another: "software".
    virtual std::string defaultsettingsroot() const = 0;

    /// 16. Folder of the process's executable; empty if the executable's path exceeds 259 UTF-16 code units.
    virtual std::string executablefolder() const = 0;

    /// 17. Starts `file` (a program, or a document with its associated program), waits without a time limit for it to
    /// end, and returns its 32-bit exit code; -1 if no process was started, which the shell may report to the user in a
    /// message box. joinarguments() joins the arguments, so quote those that contain spaces. A program without a folder
    /// is searched for as the shell does.
    ///
    /// The shell may use COM for documents: initialise it on the calling thread first, as a single-threaded apartment.
    /// The wait dispatches no messages, so a user interface thread does not respond until the program ends.
    virtual int runprocess(const std::string& file, const std::vector<std::string>& arguments) const = 0;

    /// 18. Whether a file or folder has that path.
    virtual bool pathexists(const std::string& path) const = 0;

    /// 19. Deletes a file. Failures are ignored.
    virtual void deletefile(const std::string& path) const = 0;

    /// 20. The user's folder for application data that stays on this machine.
    virtual std::string localappdatafolder() const = 0;

    /// 21. The user's folder for roaming application data.
    virtual std::string roamingappdatafolder() const = 0;

    /// 22. The program files folder for programs of the process's own bitness.
    virtual std::string programfilesfolder() const = 0;

    /// 23. The program files folder for 32-bit programs, whatever the process's own bitness.
    virtual std::string programfilesx86folder() const = 0;

    /// 24. MAC address of an IP-enabled network adapter, as six two-digit hexadecimal groups separated by colons. If
    /// there are several adapters, the one that WMI lists last. Empty if there is none, or on a thread in COM's
    /// multithreaded apartment. Any other thread is in a single-threaded apartment afterwards (see `wmi`). Takes
    /// milliseconds, so cache the result.
    virtual std::string macaddress() const = 0;

    /// 25. The times of creation, last access and last write of a file or folder, in seconds since 1970-01-01 00:00 UTC
    /// without the fraction; -1 for a time before that or after the year 3000.
    ///
    /// The conversion goes through local time: to local time with today's offset from UTC, and back with the offset at
    /// the time itself. A time in the other half of the daylight-saving year is therefore off by the difference. If the
    /// environment variable TZ is set, the conversion back uses that time zone.
    virtual bool filetimes(const std::string& path, std::int64_t& creation, std::int64_t& lastaccess,
                           std::int64_t& lastwrite) const = 0;

    /// 26. The same as slot 25, for objects that are not const. It exists only because the interface defines both
    /// forms: without it every later slot would shift.
    virtual bool filetimes(const std::string& path, std::int64_t& creation, std::int64_t& lastaccess,
                           std::int64_t& lastwrite) = 0;

    /// 27. The files and folders whose path matches `pattern` (`*` and `?` in the last component), without "." and
    /// "..", in the file system's order. `entries` is emptied first. False if the search cannot start, for example
    /// because nothing matches.
    virtual bool findfiles(const std::string& pattern, std::vector<fileentry>& entries) const = 0;

    /// 28. The value of `key` in `section` of an INI file. `value` is emptied first; true if it is not empty
    /// afterwards. Longer values are cut to 259 UTF-16 code units, without splitting a surrogate pair. A `file` without
    /// a folder is looked for in the Windows folder. A file without a UTF-16 byte order mark is read in the system's
    /// code page.
    virtual bool readinivalue(const std::string& file, const std::string& section, const std::string& key,
                              std::string& value) const = 0;

    /// 29. The configuration of a service. `service` is its short name, not its display name.
    virtual bool serviceconfig(const std::string& service, serviceconfiguration& configuration) const = 0;

    /// 30. Whether the group exists in that scope and may be read, in the view that readsettings() reads.
    virtual bool settingsexist(settingsscope scope, const settingsdef& definition) const = 0;

    /// 31. The folder that all users share.
    virtual std::string publicfolder() const = 0;

    /// 32. Whether a folder has that path.
    virtual bool directoryexists(const std::string& path) const = 0;
};

/// The process's only platform object. It is created by the first call, on any thread, and destroyed when the process
/// ends or the library is unloaded.
platform& currentplatform();

}  // namespace orvsecutils
