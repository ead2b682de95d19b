#pragma once

#include <string>
#include <vector>

#include "advice.h"
#include "tools/orvdiag/commandresult.h"

namespace orvdiag {

/// What a check looks at, in the order of its lines.
enum class area { files, framework, manager, settings, logging, logfile, profile, network };

/// The results of a check.
class findings {
public:
    /// The area is in order; `text` describes it. Not shown if something else is found there.
    void good(area where, const std::string& text);

    /// Something is wrong. `text` stands for the "…" in the sentence of `why`; the texts of one cause are joined.
    void add(area where, cause why, const std::string& text);

    /// The worst mark of an area.
    grade markof(area where) const;

    /// Per finding of the area: what is wrong, and what to do.
    std::vector<std::string> sentences(area where) const;

    /// A line for each area or finding, the steps, and the verdict. The status is 1 if there is a FAIL.
    commandresult summary() const;

private:
    struct row {
        area where;
        const advice* why;  // null if the area is in order
        std::string text;
    };

    static std::string sentence(const row& found);

    std::vector<row> rows;
};

}  // namespace orvdiag
