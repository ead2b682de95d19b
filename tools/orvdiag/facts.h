#pragma once

#include "tools/orvdiag/commandresult.h"

namespace orvdiag {

/// Every fact that `platform` can provide, with the meaning of its numbers.
commandresult facts();

/// The versions of Windows and the .NET Framework, from the registry and from the files of the runtime.
commandresult systemversions();

/// The meaning of the numbers in a fact; empty if they are missing.
/// @{
std::string explainlanguage(const std::string& code);
std::string explainversion(const std::string& numbers);
std::string explainprocessor(const std::string& numbers);
std::string explainlocales(const std::string& identifiers);
/// @}

}  // namespace orvdiag
