// orvdiag: shows what the login library finds on a machine, for support engineers who investigate a failed sign-in.

#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/orvdiag/commandline.h"
#include "tools/orvdiag/output.h"
#include "tools/orvdiag/report.h"
#include "tools/orvdiag/text.h"
#include "tools/orvdiag/trial.h"

namespace orvdiag {

namespace {

int run(const std::vector<std::string>& arguments) {
    reservestandardoutput();
    const request parsed = parse(arguments);
    if (!parsed.complaint.empty()) {
        printerror(parsed.complaint);
        return 2;
    }
    print(parsed.text);
    const int status = parsed.command ? parsed.command() : 0;
    if (!print("") && !parsed.writesfile) {
        printerror("standard output cannot be written");
        return 1;
    }
    return status;
}

}  // namespace

}  // namespace orvdiag

int wmain(int count, wchar_t** arguments) {
    try {
        if (count > 1 && arguments[1] == std::wstring(orvdiag::trialargument)) {
            return orvdiag::runtrial(count, arguments);
        }
        if (count > 1 && arguments[1] == std::wstring(orvdiag::partargument)) {
            orvdiag::reservestandardoutput();
            return orvdiag::runpart(count, arguments);
        }
        std::vector<std::string> utf8arguments;
        for (int i = 1; i < count; ++i) {
            utf8arguments.push_back(orvdiag::toutf8lossy(std::wstring_view(arguments[i])));
        }
        return orvdiag::run(utf8arguments);
    } catch (const std::exception& failed) {
        orvdiag::printerror(failed.what());
        return 1;
    }
}
