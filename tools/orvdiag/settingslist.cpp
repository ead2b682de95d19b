#include "tools/orvdiag/settingslist.h"

#include <algorithm>
#include <array>
#include <vector>

#include "orvsecutils/platform/platform.h"
#include "orvsecutils/settings/productnames.h"
#include "tools/orvdiag/json.h"
#include "tools/orvdiag/report.h"

namespace orvdiag {

using namespace orvsecutils;

namespace {

using line = std::array<std::string, 4>;

const char* kind(const setting& value) {
    static constexpr const char* words[] = {"number", "text", "list"};
    return words[static_cast<std::size_t>(value.type)];
}

// Texts in quotes, so that spaces at their ends and empty ones are seen.
std::string payload(const setting& value) {
    switch (value.type) {
        case settingtype::integer:
            return std::to_string(static_cast<const settingint&>(value).value);
        case settingtype::string:
            return jsonstring(static_cast<const settingstring&>(value).value);
        case settingtype::multistring:
            break;
    }
    std::string list;
    for (const std::string& text : static_cast<const settingmultistring&>(value).value) {
        list += (list.empty() ? "" : ", ") + jsonstring(text);
    }
    return "[" + list + "]";
}

}  // namespace

settingsdef librarygroup(const std::string& name) {
    return settingsdef(companyname, applicationid, groupkey, name, std::string());
}

std::string listing(const settingsmap& user, const settingsmap& machine) {
    std::vector<line> lines = {{"NAME", "KIND", "VALUE", "SCOPE"}};
    for (const auto& [name, value] : user) {
        lines.push_back({name, kind(*value), payload(*value), "user"});
    }
    for (const auto& [name, value] : machine) {
        const bool hidden = user.find(name) != user.end();
        lines.push_back({name, kind(*value), payload(*value), hidden ? "machine, hidden by the user's" : "machine"});
    }
    std::stable_sort(lines.begin() + 1, lines.end(), [](const line& a, const line& b) { return a[0] < b[0]; });

    std::array<std::size_t, 4> widths = {};
    for (const line& row : lines) {
        for (std::size_t i = 0; i + 1 < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size() + 2);
        }
    }
    std::string text;
    for (const line& row : lines) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            text += row[i] + std::string(std::max(widths[i], row[i].size()) - row[i].size(), ' ');
        }
        text += '\n';
    }
    return text;
}

outcome showsettings(const arguments& given) {
    const std::string& name = given.words.front();
    const settingsdef definition = librarygroup(name);
    const platform& system = currentplatform();
    const settingsmap user = system.readsettings(settingsscope::user, definition);
    const settingsmap machine = system.readsettings(settingsscope::machine, definition);
    if (!user.empty() || !machine.empty()) {
        print(listing(user, machine));
        return {0, std::to_string(user.size() + machine.size())};
    }
    if (system.settingsexist(settingsscope::user, definition) ||
        system.settingsexist(settingsscope::machine, definition)) {
        print("The group " + name + " holds no values.\n");
        return {0, "0"};
    }
    print("There is no group " + name + ", neither the user's nor the machine's.\n");
    return {1, std::nullopt};
}

}  // namespace orvdiag
