#include "outcome.h"

#include <windows.h>

#include "login/LoginManagerClient.h"

std::string utf8(const std::wstring& text) {
    const int units = static_cast<int>(text.size());
    std::string result(text.size() * 3, '\0');
    result.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), units, &result[0],
                                                               static_cast<int>(result.size()), nullptr, nullptr)));
    return result;
}

std::string outcome(const std::function<std::wstring()>& call) {
    try {
        return utf8(call());
    } catch (loginManagerException* report) {
        const statusCode code = report->code;
        delete report;
        return "code " + std::to_string(code);
    } catch (const std::exception& failure) {
        return failure.what();
    }
}
