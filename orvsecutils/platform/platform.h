#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "orvsecutils/settings/setting.h"

namespace orvsecutils {

// Only named here: definitions ask the platform, so this header cannot build on theirs.
class settingsdef;
enum class settingsscope : std::int32_t;

/// One entry of a folder.
struct fileentry {
    std::string name;        ///< without its folder
    std::int64_t lastwrite;  ///< as in platform::filetimes
};

/// What the service control manager knows about a service; the numbers are those of the Win32 service configuration.
struct serviceconfiguration {
    std::uint32_t servicetype;
    std::uint32_t starttype;
    std::uint32_t errorcontrol;
    std::string binarypathname;  ///< command line of the service
    std::string loadordergroup;
    std::uint32_t tagid;
    std::string dependencies;      ///< names of services and groups, with a zero character between each two
    std::string servicestartname;  ///< account that it runs under
    std::string displayname;
};

/// What the library asks of the operating system. Every operation is on the calling process, its user and its machine.
///
/// Texts are UTF-8 in both directions. An argument that is not valid UTF-8, and a text of the system's that is not
/// valid UTF-16, throws `std::range_error` ("bad conversion"). An argument ends at a zero character, if it holds one.
///
/// No operation tells why it failed: a text is then empty, a boolean false, and outputs are untouched unless it says
/// otherwise. Exceptions are left for exhausted memory, texts too long for a string, and buffers that cannot be had
/// (`platformerror`).
///
/// Any thread may call; nothing is kept between calls.
///
/// Paths of files take either separator; the operations on a path's mere text (9, 11, 12) want the backslash. Beyond
/// 259 UTF-16 units (247 for a new folder) the system finds no file, unless the path starts with `\\?\`.
///
/// The number in front is the operation's slot in the virtual table; slot 0 is the destructor. platformwindows.cpp has
/// the operations under the same names, in the same order.
class platform {
public:
    virtual ~platform() = default;

    /// 1. Language of the user interface, as numbered by languagecode().
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

    /// 8. Makes a folder, with every parent that is missing. True when it was made or is there already; false when a
    /// file has that name. Parents made on the way to a failure stay. Give it no trailing separator: if a parent is
    /// missing, the folder is then made as its own parent and the answer is false.
    virtual bool createdirectory(const std::string& path) const = 0;

    /// 9. `path` and `more` with one separator between them and "." and ".." resolved. `more` replaces `path` when it
    /// names a drive or a UNC share. Empty when one of the three exceeds 259 UTF-16 units.
    virtual std::string appendpath(const std::string& path, const std::string& more) const = 0;

    /// 10. File name of the process's executable; empty when its full path exceeds 259 UTF-16 units.
    virtual std::string executablename() const = 0;

    /// 11. `path` without its last component and the separator in front of it. A drive's root stays as it is; a path of
    /// one component becomes empty. After a trailing separator the last component is empty: only the separator goes.
    virtual std::string parentfolder(const std::string& path) const = 0;

    /// 12. The last component of `path`, a trailing separator included; of a drive's root, all of it.
    virtual std::string filename(const std::string& path) const = 0;

    /// 13. The values of a group in one scope. Empty when the group is not there; values that are malformed or of a
    /// kind that is not known are left out. Reads the 64-bit view of the registry.
    virtual settingsmap readsettings(settingsscope scope, const settingsdef& definition) const = 0;

    /// 14. Writes `values` into a group, making it if need be, and leaves what else it holds. False when it cannot be
    /// opened or any value not be written, as no list can; the others are written all the same. Writes the view of the
    /// registry that is a 32-bit process's own, so the machine's groups are not read back from where they were written.
    virtual bool writesettings(settingsscope scope, const settingsdef& definition, const settingsmap& values) const = 0;

    /// 15. Where settings start unless a definition says otherwise: "software".
    virtual std::string defaultsettingsroot() const = 0;

    /// 16. Folder of the process's executable; empty when its full path exceeds 259 UTF-16 units.
    virtual std::string executablefolder() const = 0;

    /// 17. Starts `file` (a program, or a document with the program that opens it), waits for its end, however long,
    /// and returns the 32 bits of its exit code; -1 when no process was started, of which the shell may tell the user
    /// in a message box. The arguments are joined by joinarguments(): one with a space in it must bring its own quotes.
    /// A program named without a folder is searched for as the shell does.
    virtual int runprocess(const std::string& file, const std::vector<std::string>& arguments) const = 0;

    /// 18. Whether a file or folder has that path.
    virtual bool pathexists(const std::string& path) const = 0;

    /// 19. Deletes a file, if that can be done.
    virtual void deletefile(const std::string& path) const = 0;

    /// 20. The user's folder for application data that stays on this machine.
    virtual std::string localappdatafolder() const = 0;

    /// 21. The user's folder for application data that follows him.
    virtual std::string roamingappdatafolder() const = 0;

    /// 22. The folder for programs of the process's own kind: on a 64-bit system the one for 32-bit programs.
    virtual std::string programfilesfolder() const = 0;

    /// 23. The folder for 32-bit programs.
    virtual std::string programfilesx86folder() const = 0;

    /// 24. Address of a network adapter that speaks IP, as six two-digit hexadecimal groups with colons; the last one's
    /// of several. Empty when there is none, and on a thread in COM's multithreaded apartment; any other thread is in a
    /// single-threaded one afterwards. Takes milliseconds, by WMI: keep the answer.
    virtual std::string macaddress() const = 0;

    /// 25. When a file or folder was made, last read and last written, in seconds since 1970-01-01 00:00 UTC, the
    /// fraction dropped; -1 for a time before that.
    ///
    /// Goes by way of local time: first with the offset from UTC that holds today, back with the one that holds at that
    /// time. So a time in the other half of the daylight-saving year comes out off by the difference between the two.
    virtual bool filetimes(const std::string& path, std::int64_t& creation, std::int64_t& lastaccess,
                           std::int64_t& lastwrite) const = 0;

    /// 26. The same, for an object that is not const.
    virtual bool filetimes(const std::string& path, std::int64_t& creation, std::int64_t& lastaccess,
                           std::int64_t& lastwrite) = 0;

    /// 27. The entries whose path matches `pattern` (`*` and `?` in the last component), files and folders without "."
    /// and "..", in the file system's order. `entries` is emptied first. True when the search could be started, which
    /// it cannot when nothing matches.
    virtual bool findfiles(const std::string& pattern, std::vector<fileentry>& entries) const = 0;

    /// 28. The value of `key` in `section` of an INI file. `value` is emptied first; true when it is not empty
    /// afterwards. Cut to 259 UTF-16 units, and not in the middle of a surrogate pair. A `file` without a folder is
    /// looked for in the Windows folder. A file that does not start with a UTF-16 mark is read in the system's code
    /// page.
    virtual bool readinivalue(const std::string& file, const std::string& section, const std::string& key,
                              std::string& value) const = 0;

    /// 29. How a service, by its short name, is set up.
    virtual bool serviceconfig(const std::string& service, serviceconfiguration& configuration) const = 0;

    /// 30. Whether readsettings() could open the group.
    virtual bool settingsexist(settingsscope scope, const settingsdef& definition) const = 0;

    /// 31. The folder that all users share.
    virtual std::string publicfolder() const = 0;

    /// 32. Whether a folder has that path.
    virtual bool directoryexists(const std::string& path) const = 0;
};

/// The process's one platform object. Made at the first call, by whichever thread, and destroyed when the process ends
/// or the library is unloaded.
platform& currentplatform();

}  // namespace orvsecutils
