#pragma once

#include <string>

#include "login/loginManagerException.h"

/// The login manager's report as a sentence for the user, with its code for support.
std::wstring sentence(statusCode code);

/// Converts the text of any other failure (`std::exception::what`) from UTF-8.
std::wstring widened(const char* utf8);

/// The text with CR LF line ends, which Windows controls need. Existing CR LF are kept.
std::wstring withLineEnds(const std::wstring& text);
