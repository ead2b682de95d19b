#pragma once

#include <string>

/// What may go wrong badly is done in another process of this program: loading a library runs its code and brings its
/// compiler's runtime in, and no exception of this statically linked program's could be relied on beside that.
namespace orvdiag {

/// How a trial ended.
struct trial {
    bool succeeded;
    std::string text;  ///< what was found out; after a failure its reason
};

/// Loads the DLL at `path` as a program does that lies beside it, and looks for the function `exported` in it.
trial tryloading(const std::wstring& path, const char* exported);

/// Starts the runtime and enters the library's managed part at `path` as the DLL at `library` does, then has it open
/// the login manager's assemblies and look for the members that the library calls. Succeeding, the text is what
/// `Inspection` in login/managed/ says.
trial tryassemblies(const std::wstring& path, const std::wstring& library);

/// The first word of the command line of such a process.
inline constexpr wchar_t trialword[] = L"--trial";

/// The main program of such a process.
int runtrial(int count, wchar_t** words);

}  // namespace orvdiag
