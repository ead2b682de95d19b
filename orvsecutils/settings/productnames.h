#pragma once

/// @file
/// Names under which this library keeps its own data, both in the registry and in the user's profile folder.
namespace orvsecutils {

inline constexpr char companyname[] = "Orvel";                     ///< the company's key or folder
inline constexpr char applicationid[] = "com.orvel.loginmanager";  ///< for stores keyed by reverse-domain identifiers
inline constexpr char groupkey[] = "LoginManager";                 ///< the key or folder below the company's

}  // namespace orvsecutils
