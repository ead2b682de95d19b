#pragma once

#include <functional>
#include <string>

/// How a call ended, in one line: its result, "code N" for the login manager's report, or the text of any other
/// failure.
std::string resultOf(const std::function<std::wstring()>& call);
