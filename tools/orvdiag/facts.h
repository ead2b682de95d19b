#pragma once

#include "tools/orvdiag/answer.h"

namespace orvdiag {

/// Every fact that the platform service knows, with what its numbers mean.
answer facts();

/// What identifies the Windows and the .NET Framework that are installed, as they are registered.
answer systemversions();

/// The words for the numbers in a fact; empty for a fact without such numbers.
/// @{
std::string languagewords(const std::string& code);
std::string versionwords(const std::string& numbers);
std::string processorwords(const std::string& numbers);
std::string localeswords(const std::string& identifiers);
/// @}

}  // namespace orvdiag
