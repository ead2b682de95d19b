#pragma once

#include <string>

namespace OrvelLoginClientCLR {

/// Full path of the DLL or program that this code is linked into.
std::wstring libraryPath();

/// Path of the file `name` in the same folder.
std::wstring besideLibrary(const wchar_t* name);

/// `path` without the prefix `\\?\`; `\\?\UNC\server\...` becomes `\\server\...`. Any other path is returned unchanged.
std::wstring withoutLongPathPrefix(const std::wstring& path);

/// The file version in the version resource of the file at `path`, as "1.2.3.4"; empty if it has none.
std::wstring fileVersion(const std::wstring& path);

/// Keeps this DLL loaded until the process ends, because managed code may call into it at any time from now on.
void pinLibrary();

}  // namespace OrvelLoginClientCLR
