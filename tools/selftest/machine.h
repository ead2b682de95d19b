#pragma once

#include <filesystem>
#include <string>

/// @file
/// The machine that the tests run on.
namespace selftest {

/// Whether Windows is a 64-bit one, which runs programs of both architectures.
bool runs64bitprograms();

/// Whether the system's folder has the DLL `name`.
bool systemhas(const std::string& name);

/// The versions of Windows (and Wine) and of the .NET Framework, and the user's rights: a line each.
std::string describemachine();

/// What the product keeps for this user or machine and the tests would delete; empty if there is nothing.
std::string whattheproductkeeps();

/// Removes what the tests may have left of the product's settings and log. Only after whattheproductkeeps() was empty.
void removewhattestsleft();

/// A new folder for temporary files. The tests find it as the folder for temporary files too. The destructor removes it
/// with its content.
class scratchfolder {
public:
    scratchfolder();
    ~scratchfolder();
    scratchfolder(const scratchfolder&) = delete;
    scratchfolder& operator=(const scratchfolder&) = delete;

    const std::filesystem::path path;
};

}  // namespace selftest
