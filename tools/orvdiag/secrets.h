#pragma once

#include <string>
#include <string_view>

/// @file
/// What must not leave a customer's machine: passwords, tokens, tickets, cookies, keys, PINs. Rules without calls of
/// the system; strings are UTF-8.
namespace orvdiag {

/// Stands where a secret stood.
inline constexpr char hidden[] = "(hidden)";

/// Whether what has this name is probably a secret, by the words in it: "UserPin" and "CASCookie" are such names,
/// "Keyboard" and "TokenTimeout" are not. For a path, whether any of its parts is such a name.
bool namesasecret(std::string_view name);

/// The string with each secret in it replaced by `hidden`, and everything else as it was: values behind a name of a
/// secret (name=value, "name": "value", name%3Dvalue, <name>value</name>, --name value, name(value)=value), passwords
/// in addresses, values behind "Bearer", and tokens and tickets that begin as such. null, true and false stay.
std::string withoutsecrets(std::string_view text);

}  // namespace orvdiag
