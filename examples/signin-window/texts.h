#pragma once

#include <string>

#include "login/loginManagerException.h"

/// The login manager's report as a sentence for the user, with its code for the support desk.
std::wstring sentence(statusCode code);

/// The text of any other failure (`std::exception::what`, in UTF-8).
std::wstring widened(const char* utf8);

/// The same text with the line ends that a Windows control wants, whichever it has.
std::wstring withLineEnds(const std::wstring& text);
