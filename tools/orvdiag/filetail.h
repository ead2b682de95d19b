#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace orvdiag {

/// Reads a text file that others write to, rename, delete and replace meanwhile. Keeps nobody from that: it holds the
/// file open only while it reads a block.
class filetail {
public:
    /// For the file at the UTF-8 path `path`, which need not be there yet. `following` keeps the file's content at hand
    /// beyond its deletion or replacement, by a second name (a hard link) beside it; where the file system has no such
    /// links, lines that were not yet read are lost with the file.
    filetail(const std::string& path, bool following);
    ~filetail();
    filetail(const filetail&) = delete;
    filetail& operator=(const filetail&) = delete;

    /// Goes to the file's start, or to where its last lines begin. Returns the system's code for why the file cannot be
    /// read, or 0.
    unsigned long begin(std::optional<std::size_t> lastlines);

    /// The next complete lines, at most about a megabyte; empty when there are none now. After the lines of a file that
    /// is gone come those of the one in its place, from its start.
    std::string next();

    /// What stands behind the last complete line.
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
    bool leaving = false;  // the file was found gone at the last call
    std::optional<identity> current;
    std::int64_t position = 0;
    std::string unfinished;
};

}  // namespace orvdiag
