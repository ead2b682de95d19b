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
expect "wine-run reports that there is no such program" [ "$(status_of "$source/script/wine-run" no.exe)" != 0 ]
same "a program's own status" 7 "$(status_of "$source/script/wine-run" cmd /c exit 7)"

# script/test alone, in a checkout with nothing to set up and a single test, which leaves a program running.
mkdir -p checkout/build/mingw-x86-release
cp -r "$source/script" "$source/CMakePresets.json" checkout
mkdir checkout/{docs,tests,other}
printf '  "%s" [\n' tests other > checkout/docs/architecture.dot
echo '#include "other/b.h"' > checkout/tests/a.h
same "the status of an include without an arrow" 1 "$(status_of checkout/script/check-architecture)"
echo '  "tests" -> "other"' >> checkout/docs/architecture.dot
same "the status with the arrow" 0 "$(status_of checkout/script/check-architecture)"
git -C checkout init -q
git -C checkout add tests script
echo 'int  a;' > checkout/a.cpp
git -C checkout add a.cpp
same "the status of lint for a source with two blanks" 1 "$(status_of checkout/script/lint)"
same "the status of lint --fix" 0 "$(status_of checkout/script/lint --fix)"
same "the source" 'int a;' "$(cat checkout/a.cpp)"
same "the status of one line of tests" 0 "$(status_of checkout/script/check-tests)"
seq 9999 >> checkout/tests/a.h
same "the status of too many" 1 "$(status_of checkout/script/check-tests)"
same "the status of a build that fails" 1 "$(status_of checkout/script/build mingw-x86-debug)"
expect "it says why, and for the preset" grep -q CMAKE_BUILD_TYPE=.Debug output
for step in setup lint check-tests build; do
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
