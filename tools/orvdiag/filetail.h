#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace orvdiag {

/// Reads the lines of a text file that other programs write, empty, delete and replace at the same time. Stays out of
/// their way: it only reads, and has the file open only for the time of a call.
///
/// A line is delivered without its end and without a byte order mark. Of a line above half a megabyte the middle is
/// left out, and the line says so. Zeros, which a power failure leaves in a file, end a line, and are delivered as a
/// line that says how many there are.
class filetail {
public:
    /// Called with each line in order.
    using taker = std::function<void(std::string_view line)>;

    /// `path`: UTF-8; the file need not exist yet.
    explicit filetail(const std::string& path);

    /// Goes to the start of the file, or to the start of its last lines. Returns 0, or the system's error code if the
    /// file cannot be read.
    unsigned long begin(std::optional<std::size_t> lastlines);

    /// Delivers the complete lines of the next megabyte at most. Returns false if there is nothing new at present. If
    /// the file was replaced, or emptied and written again, the next call continues with its new start; the lines
    /// written between the call before that moment and the moment itself are lost.
    bool next(const taker& take);

    /// Delivers what follows the last complete line.
    void rest(const taker& take);

private:
    struct opened;

    void split(std::string_view block, const taker& take);
    void finish(const taker& take);

    const std::wstring path;
    std::uint64_t current = 0;  // the file's number on its volume; 0 if it is not known
    std::int64_t position = 0;
    std::string before;       // the bytes in front of the position
    std::string line;         // what was read of a line without its end
    std::size_t leftout = 0;  // bytes out of the middle of that line
    std::uint64_t zeros = 0;  // zeros in front of that line
};

}  // namespace orvdiag
