# shellcheck shell=bash
# shellcheck disable=SC2034  # the tests that source this use them
# Sourced by the shell tests, which are called with the folders SOURCE and BUILD. Runs a test in its own empty folder,
# whose name contains everything that scripts get wrong.
set -euo pipefail
unset CDPATH
export LC_ALL=C
source=$1 build=$2
architecture=$(sed -n 's/.*"architecture": "\([^"]*\)".*/\1/p' "$build/package.json")
scratch="$build/tests/$(basename "$0" .sh) of a host's, größer & дальше"
rm -rf "$scratch"
mkdir -p "$scratch"
cd "$scratch"

expect() { # WHAT COMMAND...
  local what=$1
  shift
  "$@" || {
    echo "not so: $what"
    exit 1
  }
}
same() { # WHAT EXPECTED ACTUAL
  [ "$2" = "$3" ] || {
    printf 'not so: %s\nexpected: %s\nactual:   %s\n' "$@"
    exit 1
  }
}
blocks() { # FILE LANGUAGE: the content of its fenced blocks in that language
  sed -n "/^\`\`\`$2\$/,/^\`\`\`\$/{/^\`\`\`/d;p}" "$1"
}
host_says() { # PROGRAM STATUS OUTPUT
  local status=0 output
  output=$("$source/script/wine-run" "$1" | tr -d '\r') || status=$?
  same "what $1 prints" "$3" "$output"
  same "the exit status of $1" "$2" "$status"
}
