#!/bin/bash
# scripts.sh SOURCE BUILD: how the scripts treat their arguments, called from another folder.
. "$(dirname "$0")/../support/checks.sh"
export CDPATH=.:/
status_of() { # COMMAND...: its status, with its output in the file `output`
  local status=0
  "$@" > output 2>&1 || status=$?
  echo "$status"
}
for script in "$source"/script/*; do
  name=${script##*/}
  [[ -f $script && -x $script ]] || continue
  same "the status of $name --help" 0 "$(status_of "$script" --help)"
  same "how the help of $name begins" "$name" "$("$script" --help 2> /dev/null | sed 's/[: ].*//;q')"
  same "the status of $name --nonsense" 2 "$(status_of "$script" --nonsense)"
done
for arguments in "build mingw-x86-release x" "build " "wine-run --stop x"; do
  IFS=' ' read -r name first second <<< "$arguments"
  same "the status of $arguments" 2 "$(status_of "$source/script/$name" "$first" ${second:+"$second"})"
done
mkdir 'a;b' && cp -r "$source/script" 'a;b/'
same "the status of setup in a folder that cannot work" 1 "$(status_of 'a;b/script/setup')"
expect "setup says what to do" grep -q 'move it' output
expect "wine-run reports that there is no such program" [ "$(status_of "$source/script/wine-run" no.exe)" != 0 ]
same "what wine-run adds to standard error" "" "$(env -u XDG_RUNTIME_DIR "$source/script/wine-run" cmd /c exit 2>&1)"
same "a program's own status" 7 "$(status_of "$source/script/wine-run" cmd /c exit 7)"

expect "the caller's WINEDEBUG counts" grep -q trace: <(WINEDEBUG=+module "$source/script/wine-run" cmd /c exit 2>&1)
same "a command's status with a display" 5 "$(status_of "$source/script/with-display" bash -c 'printenv WINE_DISPLAY; exit 5')"
expect "the display is gone" [ ! -e "/tmp/.X11-unix/X$(tr -d : < output)" ]

mkdir -p checkout/build/mingw-x86-release
tar -C "$source" --exclude=./build --exclude=./.git -cf - . | tar -C checkout -xf -
git -C checkout init -q
git -C checkout add .
refuses() { # FILE TEXT SCRIPT [ARGUMENT]: the script fails when the text was added to the file
  cp "checkout/$1" kept
  printf '%s\n' "$2" >> "checkout/$1"
  same "the status of $3 with ${2:0:50}" 1 "$(status_of "checkout/script/$3" "${@:4}")"
  cp kept "checkout/$1"
}
same "the status of the documents' check in this folder" 0 "$(status_of checkout/script/docs --check)$(grep -v '/index.html$' output)"
refuses docs/architecture.dot '"orvsecutils/log" -> "tools/orvdiag"' check-architecture
refuses orvsecutils/log/log.cpp '#include "login/boundary/ManagedPart.h"' check-architecture
refuses login/include/login/uiLang.h 'int undocumented();' docs --check
refuses README.md '[dead](docs/dead.md)' docs --check
refuses README.md '[dead](docs/settings.md#dead)' check-links
refuses tests/login/probe.cpp "$(seq 9999)" check-tests
refuses login/boundary/Handshake.cpp 'int  a;' lint
refuses login/boundary/ManagerMembers.h 'ManagedMember getNew{L"getNew", translated, nullIsEmpty, emptyOffline};' check-members
same "the places without the member, and the table" 16 "$(wc -l < output)"
refuses login/boundary/ManagerMembers.h '{&NativeRecord::newField, &ManagedRecord::newField, nullFails},' check-members
same "the places without the field" 11 "$(wc -l < output)"
refuses cmake/mingw-x86.cmake "message(FATAL_ERROR for-\${CMAKE_BUILD_TYPE})" build mingw-x86-debug
expect "a failed build says why" grep -q for-Debug output

# script/test alone, in this checkout with nothing to set up and a single test, which leaves a program running.
for step in setup lint check-tests check-members build; do
  printf '#!/bin/bash\n' > checkout/script/$step
done
echo 'add_test(one bash -c "(exec -a left.exe sleep 60) > /dev/null 2>&1 &")' > checkout/build/mingw-x86-release/CTestTestfile.cmake
(exec -a other.exe sleep 60) > /dev/null 2>&1 &
other=$!
same "the status of a test that passes" 0 "$(status_of checkout/script/test -R one)"
expect "another program goes on" kill "$other"
expect "the program of the test was ended" [ -z "$(pgrep -f '^left.exe' || true)" ]
expect "a choice without a test fails" [ "$(status_of checkout/script/test -R nosuchtest)" != 0 ]

# script/demo in the same checkout, with the programs that are built.
ln -s "$build/bin" checkout/build/mingw-x86-release/bin
ln -s "$source/build/wine-prefix" checkout/build/wine-prefix
same "the status of the demo" 0 "$(status_of checkout/script/demo)"
expect "the demo shows a sign-in, the facts and the log" [ "$(grep -oE '^  nobody is|^profilefolder|logging\(on\)=on' output | sort -u | wc -l)" = 3 ]
expect "logging is off again" grep -q '^Logging is off' <("$source/script/wine-run" "$build/bin/orvdiag.exe" logging)
rm -rf "$scratch"
