#!/bin/bash
# scripts.sh SOURCE BUILD: how the scripts take what they are told, from anywhere.
. "$(dirname "$0")/../support/checks.sh"
export CDPATH=.:/
for script in "$source"/script/*; do
  [ -x "$script" ] && [ -f "$script" ] || continue
  status=0
  "$script" --help > help 2>&1 || status=$?
  same "the status of ${script##*/} --help" 0 "$status"
  same "how the help of ${script##*/} begins" "${script##*/}" "$(head -1 help | sed 's/[: ].*//')"
  "$script" --nonsense > help 2>&1 || status=$?
  same "the status of ${script##*/} --nonsense" 2 "$status"
done
status=0
"$source/script/wine-run" nosuchprogram.exe > /dev/null 2>&1 || status=$?
expect "wine-run tells that there is no such program" [ "$status" != 0 ]
