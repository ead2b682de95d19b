#include "tools/orvdiag/facts.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "orvsecutils/platform/platform.h"
#include "tools/orvdiag/json.h"
#include "tools/orvdiag/report.h"

namespace orvdiag {

namespace {

using orvsecutils::platform;

template <auto Operation>
std::string ask(const platform& system) {
    if constexpr (std::is_same_v<decltype(Operation), int (platform::*)() const>) {
        return std::to_string((system.*Operation)());
    } else {
        return (system.*Operation)();
    }
}

struct fact {
    std::string_view name;
    std::string (*ask)(const platform&);
};

// The operations without arguments, in the platform's order.
constexpr fact facts[] = {
    {"uilanguage", ask<&platform::uilanguage>},
    {"computername", ask<&platform::computername>},
    {"username", ask<&platform::username>},
    {"osversion", ask<&platform::osversion>},
    {"languageids", ask<&platform::languageids>},
    {"processorinfo", ask<&platform::processorinfo>},
    {"profilefolder", ask<&platform::profilefolder>},
    {"executablename", ask<&platform::executablename>},
    {"defaultsettingsroot", ask<&platform::defaultsettingsroot>},
    {"executablefolder", ask<&platform::executablefolder>},
    {"localappdatafolder", ask<&platform::localappdatafolder>},
    {"roamingappdatafolder", ask<&platform::roamingappdatafolder>},
    {"programfilesfolder", ask<&platform::programfilesfolder>},
    {"programfilesx86folder", ask<&platform::programfilesx86folder>},
    {"macaddress", ask<&platform::macaddress>},
    {"publicfolder", ask<&platform::publicfolder>},
};

// One fact that is no text must not take the others with it.
std::string value(const fact& row) {
    try {
        return row.ask(orvsecutils::currentplatform());
    } catch (const std::range_error& failed) {
        return "(" + std::string(failed.what()) + ")";
    }
}

}  // namespace

outcome showfacts(const arguments& given) {
    std::size_t width = 0;
    for (const fact& row : facts) {
        width = std::max(width, row.name.size());
    }
    std::string text;
    for (const fact& row : facts) {
        if (given.option) {
            text += (text.empty() ? "{\n  " : ",\n  ") + jsonstring(row.name) + ": " + jsonstring(value(row));
        } else {
            text += std::string(row.name) + std::string(width + 2 - row.name.size(), ' ') + value(row) + "\n";
        }
    }
    print(given.option ? text + "\n}\n" : text);
    return {0, std::to_string(std::size(facts))};
}

}  // namespace orvdiag
