#include "tools/orvdiag/settingslist.h"

#include "tools/orvdiag/secrets.h"
#include "tools/orvdiag/text.h"

namespace orvdiag {

namespace {

// Long enough for any name that somebody has typed; a single one of 16383 code units would widen the whole table.
constexpr std::size_t longestname = 200;

// A value without its secrets.
json shown(const json& value, bool secret) {
    if (value.is_array()) {
        json list = json::array();
        for (const json& text : value) {
            list.push_back(shown(text, secret));
        }
        return list;
    }
    if (secret && !value.is_null()) {
        return hidden;
    }
    return value.is_string() ? json(withoutsecrets(value.get<std::string>())) : value;
}

std::string valuetext(const json& value) {
    if (value.is_array()) {
        std::string list;
        for (const json& text : value) {
            list += (list.empty() ? "" : ", ") + valuetext(text);
        }
        return "[" + list + "]";
    }
    if (!value.is_string() || value == hidden) {
        return value.is_null() ? "" : value == hidden ? hidden : value.dump();
    }
    return quoted(value.get<std::string>());
}

}  // namespace

commandresult listing(const std::vector<storedvalue>& rows, bool forreport) {
    static constexpr const char* scopes[] = {"user", "machine", "machine, 32-bit view"};
    commandresult result = {0, std::string(), json::array()};
    std::vector<std::vector<std::string>> lines = {{"NAME", "KIND", "VALUE", "SCOPE"}};
    for (const storedvalue& row : rows) {
        const std::string path = row.group + (row.group.empty() || row.kind == groupkind ? "" : "\\") + row.name;
        const json value = shown(row.value, namesasecret(path));
        const char* const scope = scopes[static_cast<std::size_t>(row.location)];
        std::string name = oneline(forreport || row.kind == groupkind ? path : row.name);
        if (name.size() > longestname) {
            name = toutf8lossy(std::string_view(name).substr(0, longestname)) + "...";
        }
        lines.push_back({name, row.kind, valuetext(value), scope + (row.remark.empty() ? "" : ", " + row.remark)});
        result.data.push_back({{"group", row.group},
                               {"name", row.name},
                               {"kind", row.kind},
                               {"value", value},
                               {"scope", scope},
                               {"remark", row.remark}});
        const bool unreadable = row.badtext || row.kind == groupkind;
        result.status = unreadable && row.location != registrylocation::machine32 ? 1 : result.status;
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
