#pragma once

#include <windows.h>

#include <mscoree.h>

/// The CLR hosting interfaces of .NET Framework 4 that mingw-w64's mscoree.h lacks, in their published layout
/// (metahost.h of the .NET Framework SDK). Methods that are never called are declared only for their virtual table
/// slots.
namespace OrvelLoginClientCLR {

struct ICLRMetaHost : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetRuntime(LPCWSTR version, REFIID iid, void** runtime) = 0;
};

struct ICLRRuntimeInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetVersionString(LPWSTR buffer, DWORD* length) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRuntimeDirectory(LPWSTR buffer, DWORD* length) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsLoaded(HANDLE process, BOOL* loaded) = 0;
    virtual HRESULT STDMETHODCALLTYPE LoadErrorString(UINT id, LPWSTR buffer, DWORD* length, LONG locale) = 0;
    virtual HRESULT STDMETHODCALLTYPE LoadLibrary(LPCWSTR name, HMODULE* module) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProcAddress(LPCSTR name, void** address) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetInterface(REFCLSID clsid, REFIID iid, void** object) = 0;
};

using CLRCreateInstanceFunction = HRESULT(STDAPICALLTYPE*)(REFCLSID clsid, REFIID iid, void** object);

constexpr CLSID clsidClrMetaHost = {0x9280188d, 0x0e8e, 0x4867, {0xb3, 0x0c, 0x7f, 0xa8, 0x38, 0x84, 0xe8, 0xde}};
constexpr IID iidClrMetaHost = {0xd332db9e, 0xb9b3, 0x4125, {0x82, 0x07, 0xa1, 0x48, 0x84, 0xf5, 0x32, 0x16}};
constexpr IID iidClrRuntimeInfo = {0xbd39d1d2, 0xba2f, 0x486a, {0x89, 0xb0, 0xb4, 0xb0, 0xcb, 0x46, 0x68, 0x91}};

}  // namespace OrvelLoginClientCLR
