#!/bin/bash
# selftest.sh SOURCE BUILD PLANTED: makes the self-test's archive and runs it as on a customer's machine, by its selftest.cmd
# in a folder with a space and other letters, with one planted test of each kind in place of the real ones.
planted=$3
. "$(dirname "$0")/../support/checks.sh"
archive=$(python3 "$source/packaging/selftest.py" "$source" test-selftest "$build")
python3 -m zipfile -e "$archive" .
rm "$archive"
cd test-selftest
wine() { "$source/script/wine-run" "$@"; }

selftest() { # ARGUMENT...
  status=0
  output=$(wine cmd /c selftest.cmd "$@" 2>&1 | tr -d '\r') || status=$?
}

# Every test of CTest's that runs on Windows is in the list: all but those that check sources, scripts and packages.
ctest --test-dir "$build" -N | sed -n 's/^ *Test *#[0-9]*: \(.*[^ ]\) *$/\1/p' |
  grep -vxE 'hosts_install|orvdiag_machines|package|rebuild|scripts|selftest|.* \(Disabled\)' | sort > ../wanted
selftest --list
expect "the list is CTest's" diff -u ../wanted <(tr ' ' '\n' <<< "${output//x[68][64]\//}" | sort)

# A real test, and one of each kind.
mv x[68][64] arch
mkdir arch/planted
cp "$planted" arch/planted/planted.exe
python3 - << 'END'
import json
real = [row for row in json.load(open("arch/tests.json")) if row["name"] == "Paths.AreSplitAndJoined"]
rows = [{"name": how, "program": "planted/planted.exe", "arguments": how, "seconds": 5} for how in ("fail", "crash", "hang", "skip")]
json.dump(real + rows + [{"name": "never", "program": "none.exe", "arguments": "", "seconds": 5, "neverrun": "not here"},
                         {"name": "none", "program": "none.exe", "arguments": "", "seconds": 5}], open("arch/tests.json", "w"))
END
wine reg delete 'HKCU\software\Orvel' /f > /dev/null 2>&1 || true
wine cmd /c 'rmdir /s /q %USERPROFILE%\Orvel' > /dev/null 2>&1 || true
selftest
same "the status after failures" 1 "$status"
same "the report" "$(cat << 'END'
1 passed, 4 failed, 2 skipped

Failed
  arch/fail: ended with status 3
----
planted <output> & more

----
  arch/crash: crashed (0xC0000005)
----
planted <output> & more

----
  arch/hang: did not end within 5 seconds
----
planted <output> & more

----
  arch/none: cannot be started (error 2)

Skipped
  arch/skip: needs a reason
  arch/never: not here

Passed
  arch/Paths.AreSplitAndJoined
END
)" "$(tr -d '\r' < selftest-report.txt | sed -n '/passed,/,$p')"
expect "the report names the machine" grep -q '^Windows: .*Wine' selftest-report.txt
expect "the XML is well-formed" python3 -c 'from xml.etree import ElementTree; ElementTree.parse("selftest-report.xml")'
for part in 'tests="7" failures="4" skipped="2"' '<skipped message="needs a reason">' \
  '<failure message="ended with status 3">planted &lt;output&gt; &amp; more'; do
  expect "the XML contains $part" grep -qF "$part" selftest-report.xml
done
selftest AreSplit
same "the status without a failure" 0 "$status"
selftest AreSplat
same "the status for a name that no test has" 2 "$status"

# Settings of the product are left alone.
wine reg add 'HKCU\software\Orvel' /f > /dev/null
selftest
same "the status on a machine with settings" 1 "$status"
expect "the refusal says why: $output" grep -q 'HKEY_CURRENT_USER.software.Orvel.*' <<< "$output"
expect "the settings are still there" wine reg delete 'HKCU\software\Orvel' /f > /dev/null
