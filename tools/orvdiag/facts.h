#pragma once

#include "tools/orvdiag/answer.h"

namespace orvdiag {

/// Every fact that `platform` can provide, with the meaning of its numbers.
answer facts();

/// The versions of Windows and the .NET Framework, from the registry and from the files of the runtime.
answer systemversions();

/// The meaning of the numbers in a fact; empty if they are missing.
/// @{
std::string languagewords(const std::string& code);
std::string versionwords(const std::string& numbers);
std::string processorwords(const std::string& numbers);
std::string localeswords(const std::string& identifiers);
/// @}

}  // namespace orvdiag
