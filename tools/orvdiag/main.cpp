// Looks at what the login library finds on a machine, for those who have to find out why somebody cannot sign in.

#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvsecutils/log/log.h"
#include "orvsecutils/platform/unicode.h"
#include "tools/orvdiag/commandline.h"
#include "tools/orvdiag/report.h"

namespace orvdiag {

namespace {

// The command as a traced call.
std::string call(const request& asked) {
    std::string text = "orvdiag::" + std::string(asked.chosen->name) + "(";
    for (const std::string& word : asked.given.words) {
        text += word;
    }
    return text + ")";
}

int run(const std::vector<std::string>& texts) {
    const request asked = parse(texts);
    if (!asked.complaint.empty()) {
        complain(asked.complaint);
        return 2;
    }
    if (asked.help) {
        print(helptext(asked.chosen));
        return 0;
    }
    claimstandardoutput();
    orvsecutils::loginfo() << call(asked);
    try {
        const outcome result = asked.chosen->run(asked.given);
        if (!print("")) {
            throw std::runtime_error("standard output cannot be written");
        }
        orvsecutils::log(result.status == 0) << call(asked) << "=" << result.result.value_or("null");
        return result.status;
    } catch (const std::exception& failed) {
        orvsecutils::logerror() << call(asked) << "=" << failed.what();
        throw;
    }
}

}  // namespace

}  // namespace orvdiag

int wmain(int count, wchar_t** words) {
    try {
        std::vector<std::string> texts;
        for (int i = 1; i < count; ++i) {
            texts.push_back(orvsecutils::toutf8(words[i]));
        }
        return orvdiag::run(texts);
    } catch (const std::exception& failed) {
        orvdiag::complain(failed.what());
        return 1;
    }
}
