#pragma once

#include <string>

#include "orvsecutils/platform/wmi.h"

namespace orvsecutils {

/// The address of the network adapter that speaks IP and that WMI lists last, among those that have one. Empty when
/// there is none, or no connection.
std::string adapteraddress(const wmi* connection);

}  // namespace orvsecutils
