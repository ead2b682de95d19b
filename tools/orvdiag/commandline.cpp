#include "tools/orvdiag/commandline.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "tools/orvdiag/facts.h"
#include "tools/orvdiag/logging.h"
#include "tools/orvdiag/logincheck.h"
#include "tools/orvdiag/logview.h"
#include "tools/orvdiag/output.h"
#include "tools/orvdiag/report.h"
#include "tools/orvdiag/settingslist.h"
#include "tools/orvdiag/text.h"

namespace orvdiag {

namespace {

// What the command line is read into. It outlives the parser, as the command uses it.
struct given {
    bool json = false;
    std::string group;
    std::string state;
    std::string folder;
    std::string file = "orvdiag-report.txt";
    logrequest log;
};

int show(const answer& found, bool asjson) {
    print(asjson ? found.data.dump(2, ' ', false, json::error_handler_t::replace) + "\n" : found.text);
    return found.status;
}

const CLI::Validator notempty([](const std::string& text) { return text.empty() ? "it is empty" : ""; }, "");

// The command line's own description.
class parser {
public:
    parser() : app("orvdiag looks at what the Orvel login library finds on this machine.", "orvdiag") {
        app.allow_windows_style_options(false);  // a path may begin with a slash
        app.require_subcommand(0, 1);
        app.set_help_flag("-h,--help", "show this help, or that of a command");
        app.set_version_flag("--version", "orvdiag " ORVDIAG_VERSION);
        app.footer(
            "orvdiag COMMAND --help says more about a command; so does orvdiag help COMMAND.\n"
            "Exit status: 0 when all is well, 1 when something is missing or wrong, 2 for an invalid command line.");
        addcommands();
    }

    request read(std::vector<std::string> words) {
        std::reverse(words.begin(), words.end());  // as CLI11 takes them
        try {
            app.parse(words);
        } catch (const CLI::CallForVersion& version) {
            return {nullptr, std::string(version.what()) + "\n", {}};
        } catch (const CLI::CallForHelp&) {
            return {nullptr, app.help(), {}};
        } catch (const CLI::ParseError& failed) {
            return {nullptr, {}, complaint(failed)};
        }
        return command ? request{command, {}, {}} : request{nullptr, app.help(), {}};
    }

private:
    void addcommands();

    CLI::App* add(const char* name, const char* summary, const char* more, std::function<int(const given&)> run) {
        CLI::App* const added = app.add_subcommand(name, summary);
        added->footer(more);
        added->callback([this, run] { command = [values = values, run] { return run(*values); }; });
        return added;
    }

    void addjson(CLI::App* to) { to->add_flag("--json", values->json, "print JSON"); }

    std::string complaint(const CLI::ParseError& failed) const {
        const auto chosen = app.get_subcommands();
        const std::string place = chosen.empty() ? "orvdiag --help lists the commands"
                                                 : "orvdiag " + chosen.front()->get_name() + " --help explains it";
        std::string text = failed.what();
        if (dynamic_cast<const CLI::ExtrasError*>(&failed)) {
            const auto words = chosen.empty() ? app.remaining() : chosen.front()->remaining();
            const std::string word = words.empty() ? std::string() : words.front();
            const bool option = word.size() > 1 && word[0] == '-';
            text = (option           ? "unknown option: "
                    : chosen.empty() ? "unknown command: "
                                     : "unexpected argument: ") +
                   word;
        } else if (dynamic_cast<const CLI::ValidationError*>(&failed) ||
                   dynamic_cast<const CLI::ConversionError*>(&failed)) {
            text = "invalid argument: " + text;
        }
        return oneline(text + " (" + place + ")");
    }

    CLI::App app;
    const std::shared_ptr<given> values = std::make_shared<given>();
    std::function<int()> command;
};

void parser::addcommands() {
    addjson(
        add("facts", "machine, system, user and folders, as the library sees them",
            "Prints every fact that the library's platform service knows, one a line: name, value, and in parentheses\n"
            "what numbers mean. A fact that the system does not tell is empty.",
            [](const given& values) { return show(facts(), values.json); }));

    CLI::App* added = add(
        "settings", "a settings group: names, kinds, values and scopes",
        "Prints the values of one of the library's groups in the registry: the user's and the machine's, those in the\n"
        "32-bit view, which the library does not read, and those that it ignores or cannot read. The user's values\n"
        "win; a value of the machine's that is hidden by one is marked.",
        [](const given& values) { return show(settingsof(values.group), values.json); });
    added->add_option("GROUP", values->group, "for instance Debug")->required()->check(notempty);
    addjson(added);

    added = add(
        "logging", "shows or sets whether this user's programs log",
        "Without an argument tells whether the log is on for this user, why, and whether its file can be written.\n"
        "With one sets it for this user. Programs that are running keep their setting until they are started again.",
        [](const given& values) { return show(logging(values.state), values.json); });
    added->add_option("STATE", values->state, "on or off")->check(CLI::IsMember({"on", "off"}));
    addjson(added);

    added =
        add("log", "where the log file is, and its last lines",
            "Prints the log file's path and its last lines. --level and --program keep the lines of a record together.",
            [](const given& values) { return showlog(values.log); });
    CLI::Option* const lines = added->add_option("-n", values->log.lines, "how many lines (20)");
    added
        ->add_flag_callback(
            "--all", [given = values] { given->log.lines.reset(); }, "all lines")
        ->excludes(lines);
    added->add_option("--level", values->log.filter.levels, "records of this level only: info, warn, error or unknown")
        ->check(CLI::IsMember({"info", "warn", "error", "unknown"}))
        ->expected(1)
        ->take_all();
    added->add_option("--program", values->log.filter.program, "records of this program only, as in host.exe")
        ->check(notempty);
    added->add_flag("--follow", values->log.follow, "go on with each new line, until interrupted (Ctrl+C)");

    added = add(
        "login", "is the login library in a folder complete, does it load and run",
        "Looks for orvellogin.dll or orvelloginc.dll with what it needs beside it, and for the assemblies of the\n"
        "login manager in the folder OrvelLoginManagerClient below. Loads the library and starts the .NET Framework\n"
        "4 runtime in a process of their own, and has the assemblies opened as the library would. Signs nobody in\n"
        "and connects to nothing.",
        [](const given& values) { return show(checklogin(values.folder), values.json); });
    added->add_option("DIR", values->folder, "the library's folder, usually the program's; the tool's own unless told")
        ->check(notempty);
    addjson(added);

    added = add(
        "report", "all of this in one file, for whoever is to find the fault",
        "Writes one file in UTF-8: versions, login, facts, settings, logging, the log's last 200 lines. Replaces a\n"
        "file of that name. The exit status says whether it was written. It holds personal data, but no values of\n"
        "settings whose names look like passwords, tokens or keys.",
        [](const given& values) { return show(writereport(values.file, values.folder, values.json), false); });
    added->add_option("FILE", values->file, "where to (orvdiag-report.txt in the current folder)")->check(notempty);
    added->add_option("DIR", values->folder, "the library's folder, as for login")->check(notempty);
    added->add_flag("--json", values->json, "write JSON");
}

}  // namespace

request parse(std::vector<std::string> words) {
    if (!words.empty() && words.front() == "help") {
        words.erase(words.begin());
        words.push_back("--help");
    }
    std::replace(words.begin(), words.end(), std::string("/?"), std::string("--help"));
    return parser().read(std::move(words));
}

}  // namespace orvdiag
