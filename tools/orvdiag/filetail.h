#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace orvdiag {

/// Reads a text file that other programs write, rename, delete and replace at the same time. Does not get in their way:
/// it keeps the file open only while it reads a block.
class filetail {
public:
    /// `path`: UTF-8; the file need not exist yet. `following` keeps the file's content readable after its deletion or
    /// replacement, by a second name (a hard link) beside it. On a file system without hard links, lines that were not
    /// read before are then lost.
    filetail(const std::string& path, bool following);
    ~filetail();
    filetail(const filetail&) = delete;
    filetail& operator=(const filetail&) = delete;

    /// Goes to the start of the file, or to the start of its last lines. Returns 0, or the system's error code if the
    /// file cannot be read.
    unsigned long begin(std::optional<std::size_t> lastlines);

    /// The next complete lines, at most about a megabyte; empty if there are none at present. When the file was
    /// replaced, continues with the new file from its start.
    std::string next();

    /// The text after the last complete line.
    std::string rest();

private:
    struct identity {
        std::uint64_t volume;
        std::uint64_t file;
    };

    unsigned long link();
    void unlink();
    std::string lines(std::string block);
    std::string finished();

    const std::wstring path;
    const bool following;
    std::wstring linkname;
    bool linked = false;
    bool leaving = false;  // the last call found that the file is gone
    std::optional<identity> current;
    std::int64_t position = 0;
    std::string unfinished;
};

}  // namespace orvdiag
