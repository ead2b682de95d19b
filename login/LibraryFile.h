#pragma once

#include <string>

namespace OrvelLoginClientCLR {

/// Full path of this library's file, wherever the host program lies.
std::wstring libraryPath();

/// Path of the file `name` in the folder of this library.
std::wstring besideLibrary(const wchar_t* name);

/// `path` without `\\?\`, and `\\?\UNC\server\...` as `\\server\...`. Any other path as it is.
std::wstring withoutLongPathPrefix(const std::wstring& path);

/// The file version in the version resource of the file at `path`, as "1.2.3.4"; empty when it has none.
std::wstring fileVersion(const std::wstring& path);

/// Keeps this library in the process until it ends: from now on the managed side may call into it.
void pinLibrary();

}  // namespace OrvelLoginClientCLR
