// orvdiag: shows what the login library finds on a machine, for support engineers who investigate a failed sign-in.

#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/orvdiag/commandline.h"
#include "tools/orvdiag/output.h"
#include "tools/orvdiag/text.h"
#include "tools/orvdiag/trial.h"

namespace orvdiag {

namespace {

int run(const std::vector<std::string>& words) {
    claimstandardoutput();
    const request asked = parse(words);
    if (!asked.complaint.empty()) {
        complain(asked.complaint);
        return 2;
    }
    print(asked.text);
    const int status = asked.command ? asked.command() : 0;
    if (!print("")) {
        complain("standard output cannot be written");
        return 1;
    }
    return status;
}

}  // namespace

}  // namespace orvdiag

int wmain(int count, wchar_t** words) {
    try {
        if (count > 1 && words[1] == std::wstring(orvdiag::trialword)) {
            return orvdiag::runtrial(count, words);
        }
        std::vector<std::string> texts;
        for (int i = 1; i < count; ++i) {
            texts.push_back(orvdiag::readable(std::wstring_view(words[i])));
        }
        return orvdiag::run(texts);
    } catch (const std::exception& failed) {
        orvdiag::complain(failed.what());
        return 1;
    }
}
