#include "texts.h"

#include <windows.h>

#include <cstring>

std::wstring sentence(statusCode code) {
    // The meanings of the stand-in. The deployed login manager defines what its codes mean.
    static const wchar_t* const sentences[] = {
        L"The login manager reports a success as a failure",
        L"The password is wrong",
        L"There is no such account",
        L"The session has expired",
        L"The server cannot be reached",
        L"The account is locked",
        L"The login manager gave no answer",
        L"Nobody is signed in",
        L"The login manager reports a failure",
    };
    static_assert(sizeof sentences / sizeof *sentences == statusCodeOther + 1, "one sentence a code");
    return std::wstring(sentences[code]) + L" (code " + std::to_wstring(code) + L").";
}

std::wstring widened(const char* utf8) {
    const int bytes = static_cast<int>(std::strlen(utf8));
    std::wstring result(static_cast<std::size_t>(bytes), L'\0');  // UTF-16 never takes more units than UTF-8 bytes
    result.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8, bytes, &result[0], bytes)));
    return result;
}

std::wstring withLineEnds(const std::wstring& text) {
    std::wstring result;
    for (const wchar_t unit : text) {
        if (unit == L'\n' && (result.empty() || result.back() != L'\r')) {
            result += L'\r';
        }
        result += unit;
    }
    return result;
}
