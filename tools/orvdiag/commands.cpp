#include "tools/orvdiag/commandline.h"
#include "tools/orvdiag/facts.h"
#include "tools/orvdiag/logging.h"
#include "tools/orvdiag/logincheck.h"
#include "tools/orvdiag/logview.h"
#include "tools/orvdiag/settingslist.h"

namespace orvdiag {

const std::vector<command>& commands() {
    static const std::vector<command> table = {
        {"facts",
         "",
         false,
         {},
         "--json",
         "machine, system, user and folders, as the library sees them",
         "Prints every fact that the library's platform service knows, one a line: name, then value. A fact that the\n"
         "system does not tell is empty. processorinfo is count,architecture,level; languageids is user,system;\n"
         "osversion is major,minor,build,service pack major,minor.\n\n"
         "  --json   one JSON object, all values texts\n",
         showfacts},
        {"settings",
         "GROUP",
         true,
         {},
         "",
         "a settings group: names, kinds, values and scopes",
         "Prints the values of a group of the library's settings in the registry, those of the user and those of the\n"
         "machine. The user's win; a value of the machine's that is thus hidden is marked.\n\n"
         "  GROUP    for instance Debug\n",
         showsettings},
        {"logging",
         "on|off",
         false,
         {"on", "off"},
         "",
         "shows or sets whether this user's programs log",
         "Without a word tells whether the log is on for this user, and who says so. With one sets it for this user.\n"
         "Programs that are running keep their setting until they are started again.\n",
         switchlogging},
        {"log",
         "",
         false,
         {},
         "--follow",
         "where the log file is, and its last lines",
         "Prints the log file's path and its last 20 lines.\n\n"
         "  --follow   then goes on with each new line, until interrupted (Ctrl+C)\n",
         showlog},
        {"login",
         "DIR",
         true,
         {},
         "",
         "is the login library in a folder complete, does the runtime start",
         "Looks for orvellogin.dll in a folder, with what it needs beside it, and for the assemblies of the login\n"
         "manager in the folder OrvelLoginManagerClient below; tells their versions; starts the .NET Framework 4\n"
         "runtime by running the managed part, as the library would. Signs nobody in and connects to nothing.\n\n"
         "  DIR      the folder with orvellogin.dll, usually the program's own\n",
         checklogin},
    };
    return table;
}

}  // namespace orvdiag
