#pragma once

#include <string>

#include "login/LoginExport.h"

/// What the login manager tells of a signed-in user. All strings are UTF-16; a default-made record is empty.
///
/// There is no status here: a sign-in that did not throw succeeded.
struct ORVELLOGIN_API LoginResponse {
    LoginResponse();
    LoginResponse(const LoginResponse& other);
    LoginResponse(LoginResponse&& other) noexcept;
    LoginResponse& operator=(const LoginResponse& other);
    LoginResponse& operator=(LoginResponse&& other) noexcept;
    ~LoginResponse();

    std::wstring statusDescription;  ///< outcome of the sign-in, as the manager phrased it
    std::wstring userName;           ///< account name
    std::wstring firstName;          ///< given name
    std::wstring lastName;           ///< family name
    std::wstring rowId;              ///< identifier of the user's record on the platform
    std::wstring aliasName;          ///< display name
    std::wstring domainName;         ///< domain of the account; empty when the account has none
};
