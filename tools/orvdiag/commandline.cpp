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

// The values of a command's arguments. Outlives the parser, because the command uses it later.
struct commandarguments {
    bool json = false;
    std::string group;
    std::string state;
    std::string folder;
    std::string file = "orvdiag-report.txt";
    logrequest log;
};

int show(const commandresult& result, bool asjson) {
    print(asjson ? result.data.dump(2, ' ', false, json::error_handler_t::replace) + "\n" : result.text);
    return result.status;
}

const CLI::Validator notempty([](const std::string& text) { return text.empty() ? "it is empty" : ""; }, "");

class parser {
public:
    parser() : app("Shows what the Orvel login library finds on this machine, and whether it works.", "orvdiag") {
        app.allow_windows_style_options(false);  // a path may begin with a slash
        app.require_subcommand(0, 1);
        app.set_help_flag("-h,--help", "show this help, or the help of a command");
        app.set_version_flag("--version", "orvdiag " ORVDIAG_VERSION);
        app.footer(
            "orvdiag COMMAND --help or orvdiag help COMMAND explains a command.\n"
            "Exit status: 0 on success, 1 if something is missing or wrong, 2 for an invalid command line.");
        addcommands();
    }

    request read(std::vector<std::string> arguments) {
        std::reverse(arguments.begin(), arguments.end());  // CLI11 expects them in reverse order
        try {
            app.parse(arguments);
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

    CLI::App* add(const char* name, const char* summary, const char* details,
                  std::function<int(const commandarguments&)> run) {
        CLI::App* const added = app.add_subcommand(name, summary);
        added->footer(details);
        added->callback([this, run] { command = [values = values, run] { return run(*values); }; });
        return added;
    }

    void addjson(CLI::App* to) { to->add_flag("--json", values->json, "print JSON"); }

    std::string complaint(const CLI::ParseError& failed) const {
        const auto chosen = app.get_subcommands();
        const std::string hint = chosen.empty() ? "orvdiag --help lists the commands"
                                                : "orvdiag " + chosen.front()->get_name() + " --help explains it";
        std::string text = failed.what();
        if (dynamic_cast<const CLI::ExtrasError*>(&failed)) {
            const auto arguments = chosen.empty() ? app.remaining() : chosen.front()->remaining();
            const std::string argument = arguments.empty() ? std::string() : arguments.front();
            const bool option = argument.size() > 1 && argument[0] == '-';
            text = (option           ? "unknown option: "
                    : chosen.empty() ? "unknown command: "
                                     : "unexpected argument: ") +
                   argument;
        } else if (dynamic_cast<const CLI::ValidationError*>(&failed) ||
                   dynamic_cast<const CLI::ConversionError*>(&failed)) {
            text = "invalid argument: " + text;
        }
        return oneline(text + " (" + hint + ")");
    }

    CLI::App app;
    const std::shared_ptr<commandarguments> values = std::make_shared<commandarguments>();
    std::function<int()> command;
};

void parser::addcommands() {
    addjson(
        add("facts", "machine, system, user and folders, as the library sees them",
            "Prints every fact that the library can find out, one per line: name, value, and in parentheses what its\n"
            "numbers mean. A fact that the system cannot provide is empty.",
            [](const commandarguments& values) { return show(facts(), values.json); }));

    CLI::App* added = add(
        "settings", "a settings group: names, kinds, values and scopes",
        "Prints the values of one of the library's groups in the registry: the user's and the machine's, including\n"
        "those in the 32-bit view, which the library does not read, and those that it ignores or cannot read. A\n"
        "user's value hides the machine's value of the same name, which is then marked.",
        [](const commandarguments& values) { return show(settingsof(values.group), values.json); });
    added->add_option("GROUP", values->group, "name of the group, for example Debug")->required()->check(notempty);
    addjson(added);

    added = add(
        "logging", "shows or sets whether this user's programs log",
        "Without an argument, shows whether the log is on for this user, why, and whether its file can be written.\n"
        "With one, sets it for this user. Programs that are running keep their setting until they are started again.",
        [](const commandarguments& values) { return show(logging(values.state), values.json); });
    added->add_option("STATE", values->state, "on or off")->check(CLI::IsMember({"on", "off"}));
    addjson(added);

    added =
        add("log", "where the log file is, and its last lines",
            "Prints the log file's path and its last lines. --level and --program keep the lines of a record together.",
            [](const commandarguments& values) { return showlog(values.log); });
    CLI::Option* const lines =
        added->add_option("-n", values->log.lines, "number of lines (default: 20)")->check(CLI::NonNegativeNumber);
    added->add_flag_callback("--all", [values = values] { values->log.lines.reset(); }, "all lines")->excludes(lines);
    added->add_option("--level", values->log.filter.levels, "records of this level only: info, warn, error or unknown")
        ->check(CLI::IsMember({"info", "warn", "error", "unknown"}))
        ->expected(1)  // per --level, so that the option does not take the arguments after it too
        ->take_all();
    added->add_option("--program", values->log.filter.program, "records of this program only, for example host.exe")
        ->check(notempty);
    added->add_flag("--follow", values->log.follow, "print new lines until interrupted (Ctrl+C)");

    added = add(
        "login", "whether the login library in a folder is complete, loads and runs",
        "Looks for orvellogin.dll or orvelloginc.dll and the files that it needs beside it, and for the assemblies of\n"
        "the login manager in the sub-folder OrvelLoginManagerClient. Then loads the library, starts the .NET\n"
        "Framework 4 runtime and opens the assemblies, in a separate process. Does not sign in or connect to anything.",
        [](const commandarguments& values) { return show(checklogin(values.folder), values.json); });
    added->add_option("DIR", values->folder, "the library's folder, usually the program's (default: the tool's own)")
        ->check(notempty);
    addjson(added);

    added = add(
        "report", "all of this in one file, for the people who investigate the fault",
        "Writes one file in UTF-8: login, versions, facts, settings, logging, the last 200 lines of the log. Replaces\n"
        "an existing file of that name. The exit status says whether it was written. It contains personal data, but "
        "no\n"
        "values of settings whose names look like passwords, tokens or keys.",
        [](const commandarguments& values) {
            return show(writereport(values.file, values.folder, values.json), false);
        });
    added->add_option("FILE", values->file, "file to write (default: orvdiag-report.txt in the current folder)")
        ->check(notempty);
    added->add_option("DIR", values->folder, "the library's folder, as for login")->check(notempty);
    added->add_flag("--json", values->json, "write JSON");
}

}  // namespace

request parse(std::vector<std::string> arguments) {
    if (!arguments.empty() && arguments.front() == "help") {  // help COMMAND becomes COMMAND --help
        arguments.erase(arguments.begin());
        arguments.push_back("--help");
    }
    std::replace(arguments.begin(), arguments.end(), std::string("/?"), std::string("--help"));
    return parser().read(std::move(arguments));
}

}  // namespace orvdiag
