#!/bin/bash
# exports.sh OBJDUMP DLL LIST: compares the export table of a DLL with a list of names.
set -euo pipefail
diff -u "$3" <("$1" -p "$2" | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\] \(.*\)$/\1/p' | LC_ALL=C sort) || {
  echo "the export table differs from $3 (-: missing from the DLL, +: new in it)"
  exit 1
}
