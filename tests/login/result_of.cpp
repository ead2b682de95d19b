#include "result_of.h"

#include "login/LoginManagerClient.h"
#include "orvsecutils/platform/unicode.h"

std::string resultOf(const std::function<std::wstring()>& call) {
    try {
        return orvsecutils::toutf8(call());
    } catch (loginManagerException* report) {
        const statusCode code = report->code;
        delete report;
        return "code " + std::to_string(code);
    } catch (const std::exception& failure) {
        return failure.what();
    }
}
