#include "tools/orvdiag/findings.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "tools/orvdiag/text.h"

namespace orvdiag {

namespace {

constexpr const char* areanames[] = {
    "files of the library", ".NET Framework", "login manager", "settings", "logging", "log file", "profile",
    "network address"};
constexpr const char* marks[] = {"ok", "warn", "FAIL"};

std::string counted(std::ptrdiff_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace

void findings::good(area where, const std::string& text) {
    rows.push_back({where, nullptr, text});
}

void findings::add(area where, cause why, const std::string& text) {
    const advice* const found = &advices[static_cast<std::size_t>(why)];
    for (row& earlier : rows) {
        if (earlier.where == where && earlier.why == found) {
            earlier.text += ", " + text;
            return;
        }
    }
    rows.push_back({where, found, text});
}

grade findings::markof(area where) const {
    grade worst = grade::ok;
    for (const row& found : rows) {
        worst = found.where == where && found.why ? std::max(worst, found.why->mark) : worst;
    }
    return worst;
}

std::string findings::sentence(const row& found) {
    constexpr std::string_view place = "…";
    std::string text = found.why ? found.why->sentence : std::string(place);
    if (const std::size_t at = text.find(place); at != std::string::npos) {
        // A message of the system ends in a full stop of its own.
        text.replace(at, place.size(), found.text.substr(0, found.text.find_last_not_of('.') + 1));
    }
    return oneline(text);
}

std::vector<std::string> findings::sentences(area where) const {
    std::vector<std::string> texts;
    for (const row& found : rows) {
        if (found.where == where && found.why) {
            texts.push_back(sentence(found) + " " + found.why->step);
        }
    }
    return texts;
}

commandresult findings::summary() const {
    commandresult result = {0, std::string(), json::object()};
    std::vector<std::vector<std::string>> lines;
    std::ptrdiff_t counts[std::size(marks)] = {};
    json list = json::array();
    for (std::size_t i = 0; i < std::size(areanames); ++i) {
        const bool allgood = markof(static_cast<area>(i)) == grade::ok;
        for (const row& found : rows) {
            if (static_cast<std::size_t>(found.where) != i || (!found.why && !allgood)) {
                continue;
            }
            const auto mark = static_cast<std::size_t>(found.why ? found.why->mark : grade::ok);
            ++counts[mark];
            lines.push_back({marks[mark], areanames[i], sentence(found)});
            list.push_back({{"result", marks[mark]}, {"area", areanames[i]}, {"text", sentence(found)}});
            if (found.why) {
                lines.push_back({"", "", found.why->step});
                list.back().update({{"finding", found.why->id}, {"step", found.why->step}});
            }
        }
    }
    const std::ptrdiff_t warnings = counts[1];
    const std::ptrdiff_t problems = counts[2];
    std::string verdict = problems == 0 ? "No problems found" : counted(problems, "problem");
    verdict += warnings == 0 ? "" : ", " + counted(warnings, "warning");
    verdict += problems == 0 ? "." : "";
    result.status = problems == 0 ? 0 : 1;
    result.text = table(lines) + verdict + "\n";
    result.data = {{"verdict", verdict}, {"findings", list}};
    return result;
}

}  // namespace orvdiag
