#include "login/hosting/RuntimeFailure.h"

#include <windows.h>

#include <corerror.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <utility>

namespace OrvelLoginClientCLR {

namespace {

// Lone surrogates and zero code units, which a managed message may contain, become U+FFFD: a zero would end the result
// of what().
std::string toUtf8(std::wstring text) {
    std::replace(text.begin(), text.end(), L'\0', L'\xFFFD');
    const int units = static_cast<int>(text.size());
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), units, &result[0], bytes, nullptr, nullptr);
    return result;
}

struct CodeExplanation {
    HRESULT code;
    const wchar_t* explanation;
};

// The most frequent codes, explained for the person who has to repair the machine.

constexpr const wchar_t* badImage = sizeof(void*) == 8 ? L"a file is not a valid image for a 64-bit process"
                                                       : L"a file is not a valid image for a 32-bit process";

constexpr CodeExplanation startExplanations[] = {
    {CLR_E_SHIM_RUNTIMELOAD, L"the .NET Framework 4 is not installed or cannot be loaded"},
    {CLR_E_SHIM_LEGACYRUNTIMEALREADYBOUND,
     L"this process has bound the activation of legacy components to an older runtime "
     L"(useLegacyV2RuntimeActivationPolicy "
     L"or CorBindToRuntimeEx of the host)"},
    {HOST_E_CLRNOTAVAILABLE, L"the runtime is not available in this process (it has failed or is shutting down)"},
    {HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND), L"mscoree.dll is missing: the .NET Framework is not installed"},
    {HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND), L"mscoree.dll is older than the .NET Framework 4"},
    {E_ACCESSDENIED, L"access is denied"},
    {E_OUTOFMEMORY, L"memory is exhausted"},
    {HRESULT_FROM_WIN32(ERROR_BAD_FORMAT), badImage},
    {HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT), badImage},
};

constexpr CodeExplanation runExplanations[] = {
    {COR_E_NOTSUPPORTED,
     L"the file is marked as coming from the internet (unblock the ZIP in its properties and unpack it again), or is "
     L"on "
     L"a network share (install to a local drive, or enable loadFromRemoteSources in the host's .config)"},
    {COR_E_MISSINGMETHOD, L"the file is of another version, which lacks this method"},
    {COR_E_TYPELOAD, L"the file is of another version, which lacks this class"},
    {COR_E_FORMAT, L"the file is of another version, which does not understand this one"},
    {COR_E_ASSEMBLYEXPECTED, L"the file is damaged, is not an assembly, or is for 64-bit processes"},
    {HRESULT_FROM_WIN32(ERROR_BAD_FORMAT), L"the file is damaged, is not an assembly, or is for 64-bit processes"},
    {COR_E_NEWER_RUNTIME, L"the file needs a newer runtime than the one in this process"},
    {HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), L"the file, or one that it needs, is missing"},
    {E_ACCESSDENIED, L"access is denied"},
    {E_OUTOFMEMORY, L"memory is exhausted"},
    {HOST_E_CLRNOTAVAILABLE, L"the runtime is not available in this process (it has failed or is shutting down)"},
};

template <std::size_t count>
std::wstring explain(const CodeExplanation (&rows)[count], HRESULT result) {
    for (const CodeExplanation& row : rows) {
        if (row.code == result) {
            return row.explanation;
        }
    }
    return L"the runtime gives no other reason than its code";
}

}  // namespace

loginRuntimeException managedFailure(std::wstring typeName, std::wstring message, std::int32_t hresult) {
    std::string text = toUtf8(typeName + L": " + message);
    return loginRuntimeException(std::move(typeName), std::move(message), hresult, std::move(text));
}

loginRuntimeException nativeFailure(const std::wstring& explanation, std::int32_t hresult) {
    wchar_t code[32];
    std::swprintf(code, sizeof code / sizeof *code, L" (HRESULT 0x%08X)", static_cast<unsigned>(hresult));
    std::wstring message = explanation + code;
    std::string text = toUtf8(message);
    return loginRuntimeException(std::wstring(), std::move(message), hresult, std::move(text));
}

loginRuntimeException runtimeStartFailure(std::int32_t hresult) {
    return nativeFailure(L"the .NET Framework 4 runtime cannot be started: " + explain(startExplanations, hresult),
                         hresult);
}

loginRuntimeException methodRunFailure(const std::wstring& method, std::int32_t hresult) {
    return nativeFailure(L"the runtime cannot run " + method + L": " + explain(runExplanations, hresult), hresult);
}

loginRuntimeException nullStringFailure() {
    return managedFailure(L"System.ArgumentNullException", L"NULLPTR is not supported for this conversion.", E_POINTER);
}

std::int32_t managedLength(std::size_t units) {
    if (units > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        throw managedFailure(L"System.ArgumentOutOfRangeException", L"Size of string exceeds INT_MAX.",
                             COR_E_ARGUMENTOUTOFRANGE);
    }
    return static_cast<std::int32_t>(units);
}

}  // namespace OrvelLoginClientCLR
