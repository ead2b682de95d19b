#pragma once

/// @file
/// The record of a signed-in user.

#include <string>

#include "login/LoginExport.h"

/// The login manager's data about a signed-in user. All strings are UTF-16; a default-constructed record is empty.
///
/// There is no status field: a sign-in that did not throw succeeded, unless the record is empty because the client had
/// no memory to reach the manager (see `LoginManagerClient`).
struct ORVELLOGIN_API LoginResponse {
    LoginResponse();                                           ///< every field empty
    LoginResponse(const LoginResponse& other);                 ///< field by field
    LoginResponse(LoginResponse&& other) noexcept;             ///< leaves `other` valid but unspecified
    LoginResponse& operator=(const LoginResponse& other);      ///< field by field
    LoginResponse& operator=(LoginResponse&& other) noexcept;  ///< leaves `other` valid but unspecified
    ~LoginResponse();                                          ///< frees the fields

    std::wstring statusDescription;  ///< outcome of the sign-in, as the manager phrased it
    std::wstring userName;           ///< account name
    std::wstring firstName;          ///< given name
    std::wstring lastName;           ///< family name
    std::wstring rowId;              ///< identifier of the user's record on the platform
    std::wstring aliasName;          ///< display name
    std::wstring domainName;         ///< domain of the account; empty when the account has none
};

#ifdef ORVELLOGIN_HEADER_ONLY
inline LoginResponse::LoginResponse() = default;
inline LoginResponse::LoginResponse(const LoginResponse&) = default;
inline LoginResponse::LoginResponse(LoginResponse&&) noexcept = default;
inline LoginResponse& LoginResponse::operator=(const LoginResponse&) = default;
inline LoginResponse& LoginResponse::operator=(LoginResponse&&) noexcept = default;
inline LoginResponse::~LoginResponse() = default;
#endif
