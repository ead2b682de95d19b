#include "tools/orvdiag/facts.h"

#include <windows.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "orvsecutils/platform/platform.h"
#include "tools/orvdiag/image.h"
#include "tools/orvdiag/systemfacts.h"
#include "tools/orvdiag/text.h"
#include "tools/orvdiag/trial.h"

namespace orvdiag {

namespace {

using orvsecutils::platform;

// The numbers in a text such as "10,0,19045,0,0"; -1 for missing ones.
template <std::size_t Count>
std::array<int, Count> numbersof(const std::string& text) {
    std::array<int, Count> numbers;
    const char* next = text.c_str();
    for (int& number : numbers) {
        char* end = nullptr;
        number = static_cast<int>(std::strtol(next, &end, 10));
        number = end == next ? -1 : number;
        next = *end == ',' ? end + 1 : end;
    }
    return numbers;
}

std::string localename(int identifier) {
    const auto part = [identifier](LCTYPE type) {
        wchar_t text[128] = {};
        GetLocaleInfoW(MAKELCID(static_cast<LANGID>(identifier), SORT_DEFAULT), type, text, 128);
        return toutf8lossy(text);
    };
    const std::string language = part(LOCALE_SENGLANGUAGE);
    return language.empty() ? "unknown" : language + ", " + part(LOCALE_SENGCOUNTRY);
}

template <auto Operation>
std::string getfact(const platform& system) {
    if constexpr (std::is_same_v<decltype(Operation), int (platform::*)() const>) {
        return std::to_string((system.*Operation)());
    } else {
        return (system.*Operation)();
    }
}

// In another process, because WMI may not answer.
std::string networkaddress(const platform&) {
    const trial address = trynetworkaddress();
    return address.succeeded ? address.text : "(WMI does not answer: " + address.text + ")";
}

struct fact {
    const char* name;
    std::string (*get)(const platform&);
    std::string (*explain)(const std::string& value);  // null if the value needs no explanation
};

// The platform's operations without arguments, in its order.
constexpr fact knownfacts[] = {
    {"uilanguage", getfact<&platform::uilanguage>, explainlanguage},
    {"computername", getfact<&platform::computername>, nullptr},
    {"username", getfact<&platform::username>, nullptr},
    {"osversion", getfact<&platform::osversion>, explainversion},
    {"languageids", getfact<&platform::languageids>, explainlocales},
    {"processorinfo", getfact<&platform::processorinfo>, explainprocessor},
    {"profilefolder", getfact<&platform::profilefolder>, nullptr},
    {"executablename", getfact<&platform::executablename>, nullptr},
    {"defaultsettingsroot", getfact<&platform::defaultsettingsroot>, nullptr},
    {"executablefolder", getfact<&platform::executablefolder>, nullptr},
    {"localappdatafolder", getfact<&platform::localappdatafolder>, nullptr},
    {"roamingappdatafolder", getfact<&platform::roamingappdatafolder>, nullptr},
    {"programfilesfolder", getfact<&platform::programfilesfolder>, nullptr},
    {"programfilesx86folder", getfact<&platform::programfilesx86folder>, nullptr},
    {"macaddress", networkaddress, nullptr},
    {"publicfolder", getfact<&platform::publicfolder>, nullptr},
};

// If the text of one fact is malformed, the others are still shown.
std::string valueof(const fact& row) {
    try {
        return row.get(orvsecutils::currentplatform());
    } catch (const std::range_error& failed) {
        return "(" + std::string(failed.what()) + ")";
    }
}

}  // namespace

std::string explainlanguage(const std::string& code) {
    // As numbered by languagecode().
    static constexpr const char* languages[] = {"Chinese (traditional)",
                                                "Chinese (simplified)",
                                                "Czech",
                                                "English, or a language without a number",
                                                "French",
                                                "German",
                                                "Italian",
                                                "Japanese",
                                                "Korean",
                                                "Polish",
                                                "Portuguese (Brazil)",
                                                "Russian",
                                                "Spanish",
                                                "Turkish"};
    const auto index = static_cast<std::size_t>(numbersof<1>(code)[0]);
    return index < std::size(languages) ? languages[index] : "unknown";
}

std::string explainversion(const std::string& numbers) {
    // Workstation and server releases share version numbers.
    struct release {
        int major, minor, build;
        const char* name;
    };
    static constexpr release releases[] = {
        {10, 0, 22000, "Windows 11 or Windows Server 2025"}, {10, 0, 0, "Windows 10 or Windows Server 2016 to 2022"},
        {6, 3, 0, "Windows 8.1 or Windows Server 2012 R2"},  {6, 2, 0, "Windows 8 or Windows Server 2012"},
        {6, 1, 0, "Windows 7 or Windows Server 2008 R2"},    {6, 0, 0, "Windows Vista or Windows Server 2008"},
    };
    const auto [major, minor, build, packmajor, packminor] = numbersof<5>(numbers);
    if (major < 0) {
        return std::string();
    }
    std::string name = "unknown Windows version";
    for (const release& row : releases) {
        if (major == row.major && minor == row.minor && build >= row.build) {
            name = row.name;
            break;
        }
    }
    name += ", build " + std::to_string(build);
    return packmajor > 0 ? name + ", service pack " + std::to_string(packmajor) + "." + std::to_string(packminor)
                         : name;
}

std::string explainprocessor(const std::string& numbers) {
    struct architecture {
        int number;
        const char* name;
    };
    static constexpr architecture architectures[] = {
        {PROCESSOR_ARCHITECTURE_INTEL, "x86"},
        {PROCESSOR_ARCHITECTURE_ARM, "ARM"},
        {PROCESSOR_ARCHITECTURE_IA64, "IA64"},
        {PROCESSOR_ARCHITECTURE_AMD64, "x64"},
        {12 /* ARM64 */, "ARM64"},
    };
    const auto [count, number, level] = numbersof<3>(numbers);
    std::string name = "architecture " + std::to_string(number);
    for (const architecture& row : architectures) {
        name = number == row.number ? row.name : name;
    }
    return std::to_string(count) + (count == 1 ? " processor, " : " processors, ") + name +
           (is64bit ? " as a 64-bit" : " as a 32-bit") + " process sees it, level " + std::to_string(level);
}

std::string explainlocales(const std::string& identifiers) {
    const auto [user, system] = numbersof<2>(identifiers);
    return "user: " + localename(user) + "; system: " + localename(system);
}

commandresult facts() {
    commandresult result = {0, std::string(), json::object()};
    std::vector<std::vector<std::string>> rows;
    json meanings = json::object();
    for (const fact& row : knownfacts) {
        const std::string value = valueof(row);
        const std::string explanation = row.explain ? row.explain(value) : std::string();
        rows.push_back({row.name, oneline(value) + (explanation.empty() ? "" : "  (" + explanation + ")")});
        const bool isnumber = row.explain == explainlanguage;
        result.data[row.name] = isnumber ? json(numbersof<1>(value)[0]) : json(value);
        if (!explanation.empty()) {
            meanings[row.name] = explanation;
        }
    }
    const commandresult system = systemfacts();
    result.data["meanings"] = meanings;
    result.data["system"] = system.data;
    result.text = table(rows) + "\n" + system.text;
    return result;
}

}  // namespace orvdiag
