#include "tools/orvdiag/settingslist.h"

#include <algorithm>

#include "tools/orvdiag/text.h"

namespace orvdiag {

namespace {

std::string valuetext(const json& value) {
    if (value.is_string()) {
        return quoted(value.get<std::string>());
    }
    if (!value.is_array()) {
        return value.is_null() ? std::string() : value.dump();
    }
    std::string list;
    for (const json& text : value) {
        list += (list.empty() ? "" : ", ") + quoted(text.get<std::string>());
    }
    return "[" + list + "]";
}

// Why the library does not use a value; empty if it does.
std::string whyunused(const storedvalue& row, const std::vector<storedvalue>& rows) {
    if (row.location == registrylocation::machine32) {
        return "not read: the library reads the 64-bit view";
    }
    if (row.badtext) {
        return "malformed: not valid UTF-16, so the library cannot read the group";
    }
    if (row.ignored) {
        const bool known = row.kind == "number" || row.kind == "text" || row.kind == "list";
        return known ? "ignored: malformed" : "ignored: the library reads no values of this kind";
    }
    const bool hidden =
        row.location == registrylocation::machine && std::any_of(rows.begin(), rows.end(), [&](const auto& other) {
            return other.location == registrylocation::user && !other.ignored && other.group == row.group &&
                   other.name == row.name;
        });
    return hidden ? "hidden by the user's" : "";
}

const char* scope(registrylocation location) {
    static constexpr const char* names[] = {"user", "machine", "machine, 32-bit view"};
    return names[static_cast<std::size_t>(location)];
}

}  // namespace

bool issecretname(const std::string& name) {
    std::string lower = name;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
    });
    for (const char* part : {"pass", "pwd", "secret", "token", "key", "credential", "cookie", "ticket"}) {
        if (lower.find(part) != std::string::npos) {
            return true;
        }
    }
    return false;
}

commandresult listing(const std::vector<storedvalue>& rows, bool forreport) {
    commandresult result = {0, std::string(), json::array()};
    std::vector<std::vector<std::string>> lines = {{"NAME", "KIND", "VALUE", "SCOPE"}};
    for (const storedvalue& row : rows) {
        const json value = forreport && issecretname(row.name) ? json("(hidden)") : row.value;
        const std::string name = oneline(forreport && !row.group.empty() ? row.group + "\\" + row.name : row.name);
        const std::string remark = whyunused(row, rows);
        lines.push_back({name, row.kind, value == "(hidden)" ? "(hidden)" : valuetext(value),
                         scope(row.location) + (remark.empty() ? "" : ", " + remark)});
        result.data.push_back({{"group", row.group},
                               {"name", row.name},
                               {"kind", row.kind},
                               {"value", value},
                               {"scope", scope(row.location)},
                               {"remark", remark}});
        result.status = row.badtext && row.location != registrylocation::machine32 ? 1 : result.status;
    }
    result.text = rows.empty() ? "There are no values.\n" : table(lines);
    return result;
}

commandresult settingsof(const std::string& group) {
    const std::vector<storedvalue> rows = storedvalues(group);
    commandresult result = listing(rows, false);
    if (rows.empty()) {
        const bool exists = groupexists(group);
        result.status = exists ? 0 : 1;
        result.text = exists ? "The group " + oneline(group) + " holds no values.\n"
                             : "There is no group " + oneline(group) + ", neither the user's nor the machine's.\n";
    }
    result.data = {{"group", group}, {"values", result.data}};
    return result;
}

}  // namespace orvdiag
