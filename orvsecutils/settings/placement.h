#pragma once

/// Where this library keeps what is its own: below the company's name and the group key, in the settings store and in
/// the user's profile folder alike.
namespace orvsecutils {

inline constexpr char companyname[] = "Orvel";
inline constexpr char applicationid[] = "com.orvel.loginmanager";
inline constexpr char groupkey[] = "LoginManager";

}  // namespace orvsecutils
