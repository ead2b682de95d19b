#include "orvsecutils/settings/settings.h"

#include "orvsecutils/platform/platform.h"
#include "orvsecutils/settings/productnames.h"

namespace orvsecutils {

namespace {

// The payload of `found`; null if there is no value or it is not of the wanted type.
template <class Kind>
const decltype(Kind::value)* payload(const setting* found, settingtype wanted) {
    return found && found->type == wanted ? &static_cast<const Kind*>(found)->value : nullptr;
}

template <class Payload, class Output>
bool copyifpresent(const Payload* payload, Output& output) {
    if (!payload) {
        return false;
    }
    output = static_cast<Output>(*payload);
    return true;
}

}  // namespace

settings::settings(const settingsdef& definitionIn) : definition(definitionIn) {
    load();
}

settings::settings(const std::string& name) : definition(companyname, applicationid, groupkey, name, std::string()) {
    load();
}

void settings::load() {
    user = currentplatform().readsettings(settingsscope::user, definition);
    machine = currentplatform().readsettings(settingsscope::machine, definition);
}

const setting* settings::find(std::string_view name) const {
    // Stops at the user's value even if the caller cannot use its type: the user's values override the machine's.
    for (const settingsmap* scope : {&user, &machine}) {
        const auto entry = scope->find(name);
        if (entry != scope->end()) {
            return entry->second.get();
        }
    }
    return nullptr;
}

bool settings::getint(std::string_view name, std::uint32_t& value) const {
    return copyifpresent(payload<settingint>(find(name), settingtype::integer), value);
}

bool settings::getint(std::string_view name, std::int32_t& value) const {
    return copyifpresent(payload<settingint>(find(name), settingtype::integer), value);
}

bool settings::getbool(std::string_view name, bool& value) const {
    return copyifpresent(payload<settingint>(find(name), settingtype::integer), value);
}

bool settings::getstring(std::string_view name, std::string& value) const {
    return copyifpresent(payload<settingstring>(find(name), settingtype::string), value);
}

bool settings::getmultistring(std::string_view name, std::vector<std::string>& value) const {
    return copyifpresent(payload<settingmultistring>(find(name), settingtype::multistring), value);
}

void settings::setint(const std::string& name, std::uint32_t value) {
    // The value is created before the map changes, so a failed allocation never leaves an entry without a value.
    user.insert_or_assign(name, makesetting(value));
}

void settings::setbool(const std::string& name, bool value) {
    setint(name, value ? 1 : 0);
}

void settings::setstring(const std::string& name, const std::string& value) {
    user.insert_or_assign(name, makesetting(value));
}

bool settings::save() {
    return currentplatform().writesettings(settingsscope::user, definition, user);
}

std::set<std::string> settings::getnames() const {
    std::set<std::string> names;
    for (const settingsmap* scope : {&user, &machine}) {
        for (const auto& entry : *scope) {
            names.insert(entry.first);
        }
    }
    return names;
}

}  // namespace orvsecutils
