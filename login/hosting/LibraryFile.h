#pragma once

#include <string>
#include <vector>

namespace OrvelLoginClientCLR {

/// Full path of the DLL or program that this code is linked into.
std::wstring libraryPath();

/// Path of the file `name` in the folder of the file at `path`.
std::wstring beside(const std::wstring& path, const wchar_t* name);

/// Full paths of all DLLs of this library that are loaded in the process, also those of other versions and folders.
std::vector<std::wstring> loadedLibraries();

/// `\\?\C:\...` becomes `C:\...`, and `\\?\UNC\server\...` becomes `\\server\...`. Any other path is returned
/// unchanged, also `\\?\Volume{...}\...`, for which the runtime has no form.
std::wstring withoutLongPathPrefix(const std::wstring& path);

/// The file version in the version resource of the file at `path`, as "1.2.3.4"; empty if it has none.
std::wstring fileVersion(const std::wstring& path);

/// Keeps this DLL loaded until the process ends, because managed code may call into it at any time from now on.
void pinLibrary();

}  // namespace OrvelLoginClientCLR
