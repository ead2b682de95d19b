#!/bin/bash
# machines.sh SOURCE BUILD OBJDUMP: orvdiag without the .NET Framework, with a folder on another machine, with standard output that
# cannot be written; and the DLLs that it needs.
. "$(dirname "$0")/../support/checks.sh"
orvdiag() { "$source/script/wine-run" "$build/bin/orvdiag.exe" "$@"; }
server="$source/build/wine-prefix/dosdevices/unc/orvel-test"
mkdir -p "$server" share
ln -sfn "$PWD/share" "$server/share"
trap 'rm -r "${server%/*}"' EXIT # the parent, too: with it, every server seems to exist
cp -r "$build"/bin/{orvelloginc,OrvelLoginClientCLR}.dll "$build/bin/OrvelLoginManagerClient" share

without=$(WINEDLLOVERRIDES=mscoree= orvdiag check | tr -d '\r') || true
expect "the runtime is missing" grep -qF 'FAIL  .NET Framework        The runtime cannot be used: the .NET Framework 4' <<< "$without"
expect "and what to do" grep -q '^                            Install or repair the .NET Framework' <<< "$without"

status=0
orvdiag report '\\orvel-test\share' -o '\\orvel-test\share\r.txt' > /dev/full || status=$?
same "the status of a report without standard output" 0 "$status"
expect "the report is on the share" grep -qF 'Folder: \\orvel-test\share' share/r.txt
expect "it names the share" grep -q 'warn  files of the library  On a network drive.*: orvelloginc.dll, OrvelLoginClientCLR.dll.' share/r.txt
same "the files on the share" "OrvelLoginClientCLR.dll OrvelLoginManagerClient orvelloginc.dll r.txt" "$(cd share && echo *)"

status=0
orvdiag --help > /dev/full 2> errors || status=$?
same "the status of help without standard output" 1 "$status"
same "the error" "orvdiag: standard output cannot be written" "$(tr -d '\r' < errors)"

# Windows takes these from its own folder; a file of another name could be planted beside the tool.
known='(advapi32|kernel32|msvcrt|ole32|oleaut32|shell32|shlwapi|user32)\.dll'
same "other DLLs" "" "$("$3" -p "$build/bin/orvdiag.exe" | sed -n 's/.*DLL Name: //p' | grep -viE "^$known\$" || true)"
