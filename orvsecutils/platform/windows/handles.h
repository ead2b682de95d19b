#pragma once

#include <windows.h>

#include <objbase.h>

#include <memory>
#include <type_traits>

/// @file
/// Owning types for Windows handles and memory. Each one calls the release function named in its declaration.
namespace orvsecutils {

/// A deleter that calls `Release`.
template <auto Release>
struct releasing {
    /// Releases `resource`, which is not null.
    template <class Resource>
    void operator()(Resource* resource) const {
        Release(resource);
    }
};

/// A registry key.
using registrykey = std::unique_ptr<std::remove_pointer_t<HKEY>, releasing<RegCloseKey>>;
/// A service, or the service control manager.
using servicehandle = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, releasing<CloseServiceHandle>>;
/// A process, thread, event or mutex: kernel handles for which null means none.
using kernelhandle = std::unique_ptr<void, releasing<CloseHandle>>;
/// A string that the shell or COM allocated.
using comallocatedtext = std::unique_ptr<wchar_t, releasing<CoTaskMemFree>>;
/// A structure in memory from LocalAlloc.
template <class Record>
using localmemory = std::unique_ptr<Record, releasing<LocalFree>>;

/// Owns a handle for which INVALID_HANDLE_VALUE means none, as with CreateFile and FindFirstFile.
template <auto Release>
class filesystemhandle {
public:
    filesystemhandle() = default;

    /// Takes ownership of `handle`.
    explicit filesystemhandle(HANDLE handle) : owner(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}

    /// Whether there is a handle.
    explicit operator bool() const { return owner != nullptr; }

    /// The handle, or INVALID_HANDLE_VALUE.
    HANDLE get() const { return owner ? owner.get() : INVALID_HANDLE_VALUE; }

private:
    std::unique_ptr<void, releasing<Release>> owner;
};

/// An open file.
using filehandle = filesystemhandle<CloseHandle>;
/// A search for files.
using findhandle = filesystemhandle<FindClose>;

}  // namespace orvsecutils
