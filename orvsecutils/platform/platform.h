#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "orvsecutils/settings/setting.h"

/// @file
/// The interface to the operating system.
namespace orvsecutils {

// Only named here: definitions ask the platform, so this header cannot build on theirs.
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
    std::uint32_t tagid;         ///< place in the load order group; 0 for none
    std::string dependencies;    ///< names of services, and of groups with a "+" in front, separated by zero characters
    std::string servicestartname;  ///< account that the service runs under
    std::string displayname;       ///< name for people
};

/// The library's questions and requests to the operating system. They concern the calling process, its user and its
/// machine.
///
/// Texts are UTF-8 in both directions. An argument that is not valid UTF-8, and a text of the system's that is not
/// valid UTF-16, throws `std::range_error` ("bad conversion"). An argument ends at its first zero character; only a
/// text that writesettings() writes is stored whole.
///
/// No operation says why it failed: a text is then empty, a boolean false, and outputs are untouched unless the
/// operation says otherwise. The only other exceptions are `std::bad_alloc`, `std::length_error`, and `platformerror`
/// when there is no buffer for a system call.
///
/// Any thread may call; nothing is kept between calls.
///
/// Paths of files may have either separator; the operations on the text of a path (9, 11, 12) need backslashes. The
/// system finds no file whose path exceeds 259 UTF-16 units (247 for a folder to be made), unless the path starts with
/// `\\?\`, or the machine allows long paths (Windows 10 1607 and later) and the host's manifest declares
/// `longPathAware`. The operations that say 259 units themselves (9, 10, 16) keep to that everywhere.
///
/// The number in front is the operation's slot in the virtual table; slot 0 is the destructor. The library exports none
/// of this, but the order of the slots is part of the interface's definition, for implementations that are built apart
/// from their callers: new operations go to the end, and what is there keeps its place. platformwindows.cpp has the
/// operations in the same order.
class platform {
public:
    virtual ~platform() = default;

    /// 1. Language of the user's regional format, as numbered by languagecode(). The language in which Windows shows
    /// its own texts may be another.
    virtual int uilanguage() const = 0;

    /// 2. DNS host name of the machine, without its domain.
    virtual std::string computername() const = 0;

    /// 3. Name of the user, without a domain; empty when it has more than 255 UTF-16 units.
    virtual std::string username() const = 0;

    /// 4. "major,minor,build,service pack major,service pack minor", in decimal. From Windows 8.1 on the system gives
    /// 6.2 to a program whose manifest does not declare it compatible.
    virtual std::string osversion() const = 0;

    /// 5. "user,system": the default language identifiers of both, in decimal.
    virtual std::string languageids() const = 0;

    /// 6. "count,architecture,level" of the processors as a 32-bit process sees them, in decimal.
    virtual std::string processorinfo() const = 0;

    /// 7. The user's profile folder.
    virtual std::string profilefolder() const = 0;

    /// 8. Makes a folder, with every parent that is missing. True when it was made, by this call or by another process
    /// at the same moment, or is there already; false when a file has that name. Parents made before a failure stay.
    virtual bool createdirectory(const std::string& path) const = 0;

    /// 9. `path` and `more` with one separator between them and "." and ".." resolved. `more` replaces `path` when it
    /// names a drive or a UNC share. Empty when one of the three exceeds 259 UTF-16 units.
    virtual std::string appendpath(const std::string& path, const std::string& more) const = 0;

    /// 10. File name of the process's executable, without its folder; empty when its full path exceeds 259 UTF-16
    /// units.
    virtual std::string executablename() const = 0;

    /// 11. `path` without its last component and the separator in front of it. A drive's root stays as it is; a path of
    /// one component becomes empty. After a trailing separator the last component is empty: only the separator goes.
    virtual std::string parentfolder(const std::string& path) const = 0;

    /// 12. The last component of `path`, a trailing separator included; of a drive's root, all of it.
    virtual std::string filename(const std::string& path) const = 0;

    /// 13. The values of a group in one scope. Empty when the group does not exist; malformed values and values of
    /// unknown types are left out. Reads the 64-bit view of the registry.
    virtual settingsmap readsettings(settingsscope scope, const settingsdef& definition) const = 0;

    /// 14. Writes `values` into a group, creating it if it does not exist; values that the group has besides stay.
    /// Names and texts are converted first: when one is not valid UTF-8, nothing is written. False when the group
    /// cannot be opened or a value cannot be written, as lists never can; the others are written all the same. A text
    /// is written with the zero characters in it, but reading ends at the first. Writes the view of the registry that
    /// is a 32-bit process's own: a group written for the machine is not the one that readsettings() reads.
    virtual bool writesettings(settingsscope scope, const settingsdef& definition, const settingsmap& values) const = 0;

    /// 15. Where settings start unless a definition says otherwise: "software".
    virtual std::string defaultsettingsroot() const = 0;

    /// 16. Folder of the process's executable; empty when its full path exceeds 259 UTF-16 units.
    virtual std::string executablefolder() const = 0;

    /// 17. Starts `file` (a program, or a document with the program that opens it), waits for its end without a time
    /// limit and returns the 32 bits of its exit code; -1 when no process was started, which the shell may report to
    /// the user in a message box. The arguments are joined by joinarguments(): one that contains a space must bring its
    /// own quotes. A program named without a folder is searched for as the shell does.
    ///
    /// The shell may use COM for documents: initialise it on the calling thread first, single-threaded. The wait
    /// dispatches no messages, so a user interface thread does not respond until the program ends.
    virtual int runprocess(const std::string& file, const std::vector<std::string>& arguments) const = 0;

    /// 18. Whether a file or folder has that path.
    virtual bool pathexists(const std::string& path) const = 0;

    /// 19. Deletes a file, if that can be done.
    virtual void deletefile(const std::string& path) const = 0;

    /// 20. The user's folder for application data that stays on this machine.
    virtual std::string localappdatafolder() const = 0;

    /// 21. The user's folder for roaming application data.
    virtual std::string roamingappdatafolder() const = 0;

    /// 22. The folder for programs of the process's own bitness: on a 64-bit system the one for 32-bit programs.
    virtual std::string programfilesfolder() const = 0;

    /// 23. The folder for 32-bit programs.
    virtual std::string programfilesx86folder() const = 0;

    /// 24. MAC address of an IP-enabled network adapter, as six two-digit hexadecimal groups separated by colons; of
    /// several adapters, the one that WMI lists last. Empty when there is none, and on a thread in COM's multithreaded
    /// apartment. Any other thread is in a single-threaded apartment afterwards (see `wmi`). Takes milliseconds: keep
    /// the result.
    virtual std::string macaddress() const = 0;

    /// 25. The times of creation, last access and last write of a file or folder, in seconds since 1970-01-01 00:00 UTC
    /// without the fraction; -1 for a time before that or after the year 3000.
    ///
    /// Converted by way of local time: to local time with the offset from UTC of today, and back with that of the time
    /// itself. So a time in the other half of the daylight-saving year is off by the difference of the two. Where the
    /// environment variable TZ is set, the way back takes the time zone from there.
    virtual bool filetimes(const std::string& path, std::int64_t& creation, std::int64_t& lastaccess,
                           std::int64_t& lastwrite) const = 0;

    /// 26. The same as slot 25, for objects that are not const: the interface has the operation in both forms, and a
    /// table without this slot would move all that follow.
    virtual bool filetimes(const std::string& path, std::int64_t& creation, std::int64_t& lastaccess,
                           std::int64_t& lastwrite) = 0;

    /// 27. The files and folders whose path matches `pattern` (`*` and `?` in the last component), without "." and
    /// "..", in the file system's order. `entries` is emptied first. False when the search does not start, as when
    /// nothing matches.
    virtual bool findfiles(const std::string& pattern, std::vector<fileentry>& entries) const = 0;

    /// 28. The value of `key` in `section` of an INI file. `value` is emptied first; true when it is not empty
    /// afterwards. Cut to 259 UTF-16 units, and not in the middle of a surrogate pair. A `file` without a folder is
    /// looked for in the Windows folder. A file that does not start with a UTF-16 mark is read in the system's code
    /// page.
    virtual bool readinivalue(const std::string& file, const std::string& section, const std::string& key,
                              std::string& value) const = 0;

    /// 29. The configuration of a service, which is named by its short name.
    virtual bool serviceconfig(const std::string& service, serviceconfiguration& configuration) const = 0;

    /// 30. Whether the group exists in that scope and may be read, in the view that readsettings() reads.
    virtual bool settingsexist(settingsscope scope, const settingsdef& definition) const = 0;

    /// 31. The folder that all users share.
    virtual std::string publicfolder() const = 0;

    /// 32. Whether a folder has that path.
    virtual bool directoryexists(const std::string& path) const = 0;
};

/// The platform object of the process. It is created by the first call, on any thread, and destroyed when the process
/// ends or the library is unloaded.
platform& currentplatform();

}  // namespace orvsecutils
