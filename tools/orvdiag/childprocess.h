#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace orvdiag {

/// How a second process of this program ended.
struct childprocess {
    bool ended;          ///< by itself, and within the limit
    DWORD status;        ///< its exit status
    std::string reason;  ///< why it could not be started, or that it did not end
};

/// Runs this program with `arguments`, none of which contains a quote, and waits for it. The process inherits the
/// handle `output` as its standard output, `memory` if it is not null, and nothing else. After `limitseconds` it is
/// ended, with all that it started; so it is if this process ends.
childprocess runchild(const std::vector<std::wstring>& arguments, HANDLE output, HANDLE memory, DWORD limitseconds);

}  // namespace orvdiag
