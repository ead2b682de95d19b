#pragma once

#include <windows.h>

#include <objbase.h>

#include <memory>
#include <type_traits>

/// Owning types for what Windows hands out: what they hold is given back by the call named here.
namespace orvsecutils {

template <auto Release>
struct releasing {
    template <class Resource>
    void operator()(Resource* resource) const {
        Release(resource);
    }
};

using registrykey = std::unique_ptr<std::remove_pointer_t<HKEY>, releasing<RegCloseKey>>;
using servicehandle = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, releasing<CloseServiceHandle>>;
using filehandle = std::unique_ptr<void, releasing<CloseHandle>>;
using findhandle = std::unique_ptr<void, releasing<FindClose>>;
using taskmemory = std::unique_ptr<wchar_t, releasing<CoTaskMemFree>>;
template <class Record>
using localmemory = std::unique_ptr<Record, releasing<LocalFree>>;

}  // namespace orvsecutils
