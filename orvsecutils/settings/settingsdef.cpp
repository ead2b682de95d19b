#include "orvsecutils/settings/settingsdef.h"

#include <utility>

#include "orvsecutils/platform/platform.h"

namespace orvsecutils {

settingsdef::settingsdef(std::string companyIn, std::string appidIn, std::string groupIn, std::string nameIn,
                         std::string rootIn)
    : company(std::move(companyIn)),
      appid(std::move(appidIn)),
      group(std::move(groupIn)),
      name(std::move(nameIn)),
      root(std::move(rootIn)) {}

std::string settingsdef::getroot() const {
    return root.empty() ? currentplatform().defaultsettingsroot() : root;
}

}  // namespace orvsecutils
