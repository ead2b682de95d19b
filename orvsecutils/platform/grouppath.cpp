#include "orvsecutils/platform/grouppath.h"

namespace orvsecutils {

std::string grouppath(const settingsdef& definition) {
    std::string path = definition.getroot() + "\\" + definition.company;
    for (const std::string* part : {&definition.group, &definition.name}) {
        if (!part->empty()) {
            path += "\\" + *part;
        }
    }
    return path;
}

}  // namespace orvsecutils
