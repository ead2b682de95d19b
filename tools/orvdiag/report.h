#pragma once

#include <string>

#include "tools/orvdiag/commandresult.h"

namespace orvdiag {

/// Writes a summary, questions to the sender and all parts to a file in UTF-8, as text or as JSON. Each part runs in a
/// process of its own, so one that crashes or hangs does not stop the others. `file` is the file's path; if it is
/// empty, the file has a default name in the current folder, or else in the folder for temporary files. `folder` is the
/// login library's. The result says where the file is, or why it could not be written.
commandresult writereport(const std::string& file, const std::wstring& folder, bool asjson);

/// The first argument of a process that runs a part.
inline constexpr wchar_t partargument[] = L"--part";

/// The main function of such a process.
int runpart(int count, wchar_t** arguments);

}  // namespace orvdiag
