#pragma once

/// @file
/// Names under which this library keeps its own data, in the settings store and in the user's profile folder alike.
namespace orvsecutils {

inline constexpr char companyname[] = "Orvel";                     ///< the maker's key or folder
inline constexpr char applicationid[] = "com.orvel.loginmanager";  ///< for stores that are keyed by such identifiers
inline constexpr char groupkey[] = "LoginManager";                 ///< the key or folder below the maker's

}  // namespace orvsecutils
