#pragma once

#include <string>

/// Checks that could crash or hang, run in a second process of this program. Loading a library runs its code. It also
/// loads the compiler's shared runtime, beside which exceptions in this statically linked program are not reliable.
namespace orvdiag {

/// The result of a trial.
struct trial {
    bool succeeded;
    bool finished;     ///< false if the process crashed, ended early or did not end
    std::string text;  ///< what was found out; after a failure, the reason
};

/// Loads the DLL at `path` as a program in the same folder would, and looks for the function `exported` in it.
trial tryloading(const std::wstring& path, const char* exported);

/// Starts the runtime and calls the library's managed part at `path` as the DLL at `library` does. Then lets it open
/// the login manager's assemblies and look for the members that the library calls. After success the text is the output
/// of `Inspection` in login/managed/.
trial tryassemblies(const std::wstring& path, const std::wstring& library);

/// Asks WMI for the network address, as `platform::macaddress` does.
trial trynetworkaddress();

/// The first argument of such a process.
inline constexpr wchar_t trialargument[] = L"--trial";

/// The main function of such a process.
int runtrial(int count, wchar_t** arguments);

}  // namespace orvdiag
