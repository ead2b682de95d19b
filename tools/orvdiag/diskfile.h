#pragma once

#include <optional>
#include <string>

/// What a check asks of files, beside their content. Paths may begin with `\\server\share` or `\\?\`.
namespace orvdiag {

/// The full path of a path in UTF-8, which is relative to the current folder; without a "\" at its end.
std::wstring fullpath(const std::string& path);

/// The content of a file. If it cannot be read, none, and GetLastError() says why.
std::optional<std::string> readfile(const std::wstring& path);

/// Whether both paths lead to one file.
bool samefile(const std::wstring& a, const std::wstring& b);

/// Whether a file is marked as coming from the internet.
bool isfrominternet(const std::wstring& path);

/// Whether a path is on another machine.
bool isonnetwork(const std::wstring& path);

}  // namespace orvdiag
