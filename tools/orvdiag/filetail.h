#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvdiag {

/// The last `count` lines of a text, without carriage returns. A text that was cut somewhere in front of them starts
/// with half a line; `cut` says so, and that half is then left out.
std::string lastlines(std::string_view text, std::size_t count, bool cut);

/// The end of a file that others write to. Keeps nobody from writing, renaming or deleting it: it is open only during a
/// call.
class filetail {
public:
    /// `path` is UTF-8.
    explicit filetail(std::string path);

    /// The last lines there are, at most `count` and at most those in the last 64 KiB; none when the file cannot be
    /// read, as when it is not there. added() goes on behind them.
    std::optional<std::string> last(std::size_t count);

    /// What has been added since the last call, without carriage returns. A file that has become shorter is a new one
    /// and is taken from its start.
    std::string added();

private:
    std::string path;
    std::int64_t position = 0;
};

}  // namespace orvdiag
