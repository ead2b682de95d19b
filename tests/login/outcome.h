#pragma once

#include <functional>
#include <string>

std::string utf8(const std::wstring& text);

/// What a call ended in, in one line: its result, "code N" for the login manager's report, or the text of any other
/// failure.
std::string outcome(const std::function<std::wstring()>& call);
