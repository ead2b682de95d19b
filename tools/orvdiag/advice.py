"""advice.py PAGE HEADER: writes the rows of the page's table of findings as a C++ header, so that the tool and its page give the
same advice."""
import json
import pathlib
import re
import sys

page, header = map(pathlib.Path, sys.argv[1:])
rows = re.findall(r"^\| ([a-z-]+) \| (FAIL|warn) \| (.+) \| (.+) \|$", page.read_text(encoding="utf-8"), re.MULTILINE)


def literal(cell):
    return json.dumps(cell.replace("`", '"'), ensure_ascii=False)


header.parent.mkdir(parents=True, exist_ok=True)
header.write_text(encoding="utf-8", data="""#pragma once

namespace orvdiag {

/// How good a finding is, from the best to the worst.
enum class grade { ok, warn, fail };

/// What `orvdiag check` can find.
enum class cause { %s };

/// A row of the page's table. "…" in the sentence stands for what was found.
struct advice {
    const char* id;
    grade mark;
    const char* sentence;
    const char* step;
};

constexpr advice advices[] = {
%s
};

}  // namespace orvdiag
""" % (", ".join(row[0].replace("-", "") for row in rows),
       "\n".join('    {"%s", grade::%s, %s, %s},' % (row[0], row[1].lower(), literal(row[2]), literal(row[3]))
                 for row in rows)))
