#include "orvsecutils/settings/setting.h"

#include <utility>

namespace orvsecutils {

settingint::settingint(std::uint32_t number) : setting(settingtype::integer), value(number) {}

settingstring::settingstring(std::string text) : setting(settingtype::string), value(std::move(text)) {}

settingmultistring::settingmultistring(std::vector<std::string> texts)
    : setting(settingtype::multistring), value(std::move(texts)) {}

std::unique_ptr<setting> makesetting(std::uint32_t number) {
    return std::make_unique<settingint>(number);
}

std::unique_ptr<setting> makesetting(std::string text) {
    return std::make_unique<settingstring>(std::move(text));
}

std::unique_ptr<setting> makesetting(std::vector<std::string> texts) {
    return std::make_unique<settingmultistring>(std::move(texts));
}

}  // namespace orvsecutils
