#pragma once

#include <functional>
#include <string>

/// What a call ended in, in one line: its result, "code N" for the login manager's report, or the text of any other
/// failure.
std::string outcome(const std::function<std::wstring()>& call);
