#pragma once

#include "tools/orvdiag/commandresult.h"

namespace orvdiag {

/// Every fact that `platform` can provide, with the meaning of its numbers; then those of systemfacts().
commandresult facts();

/// The meaning of the numbers in a fact; empty if they are missing.
/// @{
std::string explainlanguage(const std::string& code);
std::string explainversion(const std::string& numbers);
std::string explainprocessor(const std::string& numbers);
std::string explainlocales(const std::string& identifiers);
/// @}

}  // namespace orvdiag
