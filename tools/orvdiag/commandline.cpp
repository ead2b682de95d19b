#include "tools/orvdiag/commandline.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "orvsecutils/platform/platform.h"
#include "tools/orvdiag/check.h"
#include "tools/orvdiag/diskfile.h"
#include "tools/orvdiag/facts.h"
#include "tools/orvdiag/libraryfiles.h"
#include "tools/orvdiag/logging.h"
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
    bool files = false;
    std::string group;
    std::string state;
    std::string folder;
    std::string file;
    logrequest log;
};

int show(const commandresult& result, bool asjson) {
    print(asjson ? jsontext(result.data) : result.text);
    return result.status;
}

// The folder that is checked: the tool's own if none was given.
std::wstring checkedfolder(const commandarguments& values) {
    return fullpath(values.folder.empty() ? orvsecutils::currentplatform().executablefolder() : values.folder);
}

int showcheck(const commandarguments& values) {
    const std::wstring folder = checkedfolder(values);
    commandresult result = check(folder);
    if (values.files) {
        const commandresult files = listfiles(folder);
        result.text.insert(0, files.text + "\n");
        result.data["files"] = files.data;
    }
    return show(result, values.json);
}

const CLI::Validator notempty([](const std::string& text) { return text.empty() ? "it must not be empty" : ""; }, "");

class parser {
public:
    parser() : app("Shows what the Orvel login library finds on this machine, and whether it works.", "orvdiag") {
        app.allow_windows_style_options(false);  // a path may begin with a slash
        app.require_subcommand(0, 1);
        app.set_help_flag("-h,--help", "show this help, or the help of a command");
        app.set_version_flag("--version", "orvdiag " ORVDIAG_VERSION);
        app.footer(
            "Without a command: check. orvdiag COMMAND --help or orvdiag help COMMAND explains a command.\n"
            "Exit status: 0 on success, 1 if there is a problem, 2 for an invalid command line.");
        addcommands();
    }

    request read(std::vector<std::string> arguments) {
        std::reverse(arguments.begin(), arguments.end());  // CLI11 expects them in reverse order
        try {
            app.parse(arguments);
        } catch (const CLI::CallForVersion& version) {
            return {nullptr, std::string(version.what()) + "\n", {}};
        } catch (const CLI::CallForHelp&) {
            const std::string surplus = surplusargument();
            return surplus.empty() ? request{nullptr, app.help(), {}} : request{nullptr, {}, oneline(surplus)};
        } catch (const CLI::ParseError& failed) {
            return {nullptr, {}, complaint(failed)};
        }
        return {command, {}, {}, app.got_subcommand("report")};
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

    // What is wrong with the first argument that nothing takes; empty if there is none.
    std::string surplusargument() const {
        const auto chosen = app.get_subcommands();
        const auto arguments = chosen.empty() ? app.remaining() : chosen.front()->remaining();
        if (arguments.empty()) {
            return std::string();
        }
        const std::string& argument = arguments.front();
        const bool option = argument.size() > 1 && argument[0] == '-';
        return (option           ? "unknown option: "
                : chosen.empty() ? "unknown command: "
                                 : "unexpected argument: ") +
               argument + hint();
    }

    std::string hint() const {
        const auto chosen = app.get_subcommands();
        return chosen.empty() ? " (orvdiag --help lists the commands)"
                              : " (orvdiag " + chosen.front()->get_name() + " --help explains it)";
    }

    std::string complaint(const CLI::ParseError& failed) const {
        if (dynamic_cast<const CLI::ExtrasError*>(&failed)) {
            return oneline(surplusargument());
        }
        const bool invalid =
            dynamic_cast<const CLI::ValidationError*>(&failed) || dynamic_cast<const CLI::ConversionError*>(&failed);
        return oneline((invalid ? "invalid argument: " : "") + std::string(failed.what()) + hint());
    }

    CLI::App app;
    const std::shared_ptr<commandarguments> values = std::make_shared<commandarguments>();
    std::function<int()> command;
};

void parser::addcommands() {
    CLI::App* added = add(
        "check", "what is wrong, and what to do: the library, its login manager, this user's settings and log",
        "Checks orvellogin.dll or orvelloginc.dll and the files that it needs beside it, loads the library, starts "
        "the\n"
        ".NET Framework 4 runtime and opens the assemblies of the login manager, in a separate process. Then checks\n"
        "settings, logging, log file, profile and network address. Does not sign in or connect to anything. Status 1 "
        "if\n"
        "there is a line with FAIL.",
        showcheck);
    added->add_option("DIR", values->folder, "the library's folder, usually the program's (default: the tool's own)")
        ->check(notempty);
    added->add_flag("--files", values->files, "also list the files with version, size and SHA-256");
    addjson(added);

    addjson(
        add("facts", "machine, system, user and folders, as the library sees them",
            "Prints every fact that the library can find out, one per line: name, value, and in parentheses what its\n"
            "numbers mean. A fact that the system cannot provide is empty. Then Windows, the .NET Framework, the "
            "user's rights,\n"
            "PATH, and the running programs that have loaded the library.",
            [](const commandarguments& values) { return show(facts(), values.json); }));

    added = add(
        "settings", "a settings group: names, kinds, values and scopes",
        "Prints the values of one of the library's groups in the registry: the user's and the machine's, including\n"
        "those in the 32-bit view, which the library does not read, and those that it ignores or cannot read. A\n"
        "user's value overrides the machine's value of the same name, which is then marked. Values whose name\n"
        "or group looks like a password, token or key, and such parts of other values, are (hidden).",
        [](const commandarguments& values) { return show(settingsof(values.group), values.json); });
    added->add_option("GROUP", values->group, "name of the group, for example Debug")->required()->check(notempty);
    addjson(added);

    added = add(
        "logging", "shows or sets whether this user's programs log",
        "Without an argument, shows whether the log is on for this user, why, and whether its file can be written.\n"
        "With one, sets it for this user. Running programs keep their setting until they are restarted.",
        [](const commandarguments& values) { return show(logging(values.state), values.json); });
    added->add_option("STATE", values->state, "on or off")->check(CLI::IsMember({"on", "off"}));
    addjson(added);

    added = add(
        "log", "where the log file is, and its last lines",
        "Prints the log file's path and its last lines. --level and --program keep the lines of a record together.\n"
        "--follow also goes on after the file was renamed, deleted, replaced, or emptied. What was written less than\n"
        "20 milliseconds before that moment is lost; the tool has the file open only while it reads, and never\n"
        "changes it. In long lines the middle is left out. Passwords, tokens, keys and the like are (hidden),\n"
        "control characters are shown as codes, malformed characters are replaced.",
        [](const commandarguments& values) { return showlog(values.log); });
    CLI::Option* const lines = added->add_option("-n", values->log.lines, "number of lines (default: 20)")
                                   ->check(notempty)
                                   ->check(CLI::NonNegativeNumber);
    added->add_flag_callback("--all", [values = values] { values->log.lines.reset(); }, "all lines")->excludes(lines);
    added->add_option("--level", values->log.filter.levels, "records of this level only: info, warn, error or unknown")
        ->check(CLI::IsMember({"info", "warn", "error", "unknown"}))
        ->allow_extra_args(false);  // one per --level
    added->add_option("--program", values->log.filter.program, "records of this program only, for example host.exe")
        ->check(notempty);
    added->add_flag("--follow", values->log.follow, "print new lines until interrupted (Ctrl+C)");

    added = add(
        "report", "all of this in one file, for support",
        "Writes one file in UTF-8: the summary of check with the next steps, questions to the sender, the library's\n"
        "files, facts, settings, logging, and the last 200 lines of the log. Replaces an existing file of that name.\n"
        "Status 0 if it was written. It contains personal data, but no values that look like passwords, tokens or "
        "keys.",
        [](const commandarguments& values) {
            return show(writereport(values.file, checkedfolder(values), values.json), false);
        });
    added->add_option("DIR", values->folder, "the library's folder, as for check")->check(notempty);
    added
        ->add_option("-o", values->file,
                     "file to write (default: orvdiag-report.txt or .json in the current folder, or if that is not\n"
                     "possible in the folder for temporary files)")
        ->check(notempty);
    added->add_flag("--json", values->json, "write JSON");
}

}  // namespace

request parse(std::vector<std::string> arguments) {
    if (arguments.empty()) {
        arguments.push_back("check");
    } else if (arguments.front() == "help") {  // help COMMAND becomes COMMAND --help
        arguments.erase(arguments.begin());
        arguments.push_back("--help");
    }
    std::replace(arguments.begin(), arguments.end(), std::string("/?"), std::string("--help"));
    return parser().read(std::move(arguments));
}

}  // namespace orvdiag
