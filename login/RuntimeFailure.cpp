#include "login/RuntimeFailure.h"

#include <windows.h>

#include <cstdio>
#include <limits>
#include <utility>

namespace OrvelLoginClientCLR {

namespace {

// Lone surrogates, which a managed message may hold, become U+FFFD.
std::string toUtf8(const std::wstring& text) {
    const int units = static_cast<int>(text.size());
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), units, &result[0], bytes, nullptr, nullptr);
    return result;
}

// HRESULTs of the runtime's own argument exceptions (corerror.h).
constexpr std::int32_t argumentNull = static_cast<std::int32_t>(0x80004003);
constexpr std::int32_t argumentOutOfRange = static_cast<std::int32_t>(0x80131502);

}  // namespace

loginRuntimeException managedFailure(std::wstring typeName, std::wstring message, std::int32_t hresult) {
    std::string text = toUtf8(typeName + L": " + message);
    return loginRuntimeException(std::move(typeName), std::move(message), hresult, std::move(text));
}

loginRuntimeException startFailure(const std::wstring& words, std::int32_t hresult) {
    wchar_t code[32];
    std::swprintf(code, sizeof code / sizeof *code, L" (HRESULT 0x%08X)", static_cast<unsigned>(hresult));
    std::wstring message = words + code;
    std::string text = toUtf8(message);
    return loginRuntimeException(std::wstring(), std::move(message), hresult, std::move(text));
}

loginRuntimeException nullStringFailure() {
    return managedFailure(L"System.ArgumentNullException", L"NULLPTR is not supported for this conversion.",
                          argumentNull);
}

std::int32_t managedLength(std::size_t units) {
    if (units > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        throw managedFailure(L"System.ArgumentOutOfRangeException", L"Size of string exceeds INT_MAX.",
                             argumentOutOfRange);
    }
    return static_cast<std::int32_t>(units);
}

}  // namespace OrvelLoginClientCLR
