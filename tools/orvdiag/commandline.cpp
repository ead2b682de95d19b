#include "tools/orvdiag/commandline.h"

#include <algorithm>

namespace orvdiag {

namespace {

const command* find(std::string_view name) {
    for (const command& row : commands()) {
        if (row.name == name) {
            return &row;
        }
    }
    return nullptr;
}

std::string quoted(const std::string& text) {
    return "'" + text + "'";
}

// What a word or option of a command cannot be, or nothing.
std::string objection(const command& chosen, const arguments& given, const std::string& text) {
    const std::string place = " (orvdiag " + std::string(chosen.name) + " --help tells what it takes)";
    if (text.size() > 1 && text[0] == '-') {
        return "unknown option " + quoted(text) + place;
    }
    if (given.words.size() == (chosen.word.empty() ? 0 : 1)) {
        return "one word too many: " + quoted(text) + place;
    }
    const auto& choices = chosen.choices;
    if (!choices.empty() && std::find(choices.begin(), choices.end(), text) == choices.end()) {
        return "unknown word " + quoted(text) + place;
    }
    return std::string();
}

std::string usage(const command& row) {
    std::string line = "orvdiag " + std::string(row.name);
    if (!row.word.empty()) {
        line += row.wordneeded ? " " + std::string(row.word) : " [" + std::string(row.word) + "]";
    }
    return row.option.empty() ? line : line + " [" + std::string(row.option) + "]";
}

}  // namespace

request parse(const std::vector<std::string>& texts) {
    request result;
    result.help = texts.empty();
    for (const std::string& text : texts) {
        if (text == "--help" || text == "-h") {
            result.help = true;
        } else if (!result.chosen) {
            result.chosen = find(text);
            if (!result.chosen) {
                result.complaint = "unknown command " + quoted(text) + " (orvdiag --help lists the commands)";
                return result;
            }
        } else if (!result.chosen->option.empty() && text == result.chosen->option) {
            result.given.option = true;
        } else {
            result.complaint = objection(*result.chosen, result.given, text);
            if (!result.complaint.empty()) {
                return result;
            }
            result.given.words.push_back(text);
        }
    }
    if (!result.help && result.chosen->wordneeded &&
        (result.given.words.empty() || result.given.words.front().empty())) {
        result.complaint = std::string(result.chosen->word) + " is missing: " + usage(*result.chosen);
    }
    return result;
}

std::string helptext(const command* chosen) {
    if (chosen) {
        return usage(*chosen) + "\n\n" + std::string(chosen->help);
    }
    std::string text = "orvdiag looks at what the Orvel login library finds on this machine.\n\n";
    std::size_t width = 0;
    for (const command& row : commands()) {
        width = std::max(width, usage(row).size());
    }
    for (const command& row : commands()) {
        text += "  " + usage(row) + std::string(width + 2 - usage(row).size(), ' ') + std::string(row.summary) + "\n";
    }
    return text +
           "\norvdiag COMMAND --help says more about one of them.\n"
           "Exit status: 0 when all is well, 1 when something is missing or wrong, 2 for a command line that makes no\n"
           "sense. When logging is on, the tool logs what it does, and echoes that on standard error.\n";
}

}  // namespace orvdiag
