#!/bin/bash
# package.sh SOURCE BUILD: uses the ZIP as its users do.
. "$(dirname "$0")/../support/checks.sh"
# Also those of an earlier version.
rm -f "$build"/*-mingw-x86*.zip*
cmake --build "$build" --target orvellogin_zip > zip.log || { cat zip.log && exit 1; }
(cd "$build" && sha256sum --check --quiet ./*-mingw-x86.zip.sha256)
unzip -q "$build"/*-mingw-x86.zip
unzip -q "$build"/*-mingw-x86-debug.zip
PACKAGE=$(echo "$PWD"/orvellogin-*-mingw-x86)
export PACKAGE
version=$(sed -n 's/^project(orvellogin VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")

echo "== what is in it"
expect "LICENSE and NOTICES lie at the top" [ -s "$PACKAGE/LICENSE" -a -s "$PACKAGE/NOTICES.md" ]
expect "nothing for maintainers" [ ! -e "$PACKAGE/docs/architecture.md" -a ! -e "$PACKAGE/docs/development.md" ]
python3 - "$PACKAGE" << 'END'
import pathlib, re, sys
top = pathlib.Path(sys.argv[1])
wrong = []
for page in sorted(top.rglob("*.md")):
    text = page.read_text(encoding="utf-8")
    names = {re.sub(r"[^\w -]", "", line.lstrip("#").strip().lower()).replace(" ", "-") for line in text.split("\n") if line.startswith("#")}
    for link in re.findall(r"\]\(([^)]+)\)", text):
        file, _, anchor = link.partition("#")
        if "://" not in link and (not (page.parent / file).exists() or not file and anchor not in names):
            wrong.append("%s: no %s" % (page.name, link))
    for header in re.findall(r'[\w./-]+\.h\b', text):
        if not list(top.glob("include*/**/" + header.split("include/")[-1])) and header not in ("corerror.h", "windows.h"):
            wrong.append("%s: no header %s" % (page.name, header))
sys.exit("\n".join(wrong) or 0)
END
# shellcheck disable=SC2016  # the backquotes are the page's
for notice in $(grep -o '`[a-z0-9A-Z-]*\.txt`' "$PACKAGE/NOTICES.md" | tr -d '`'); do
  expect "$notice is there" [ -s "$PACKAGE/notices/$notice" ]
done
expect "each notice has a text of its own" [ -z "$(md5sum "$PACKAGE"/notices/* | cut -c1-32 | sort | uniq -d)" ]

expect "API pages without scripts" \
  [ -s "$PACKAGE/docs/api/classLoginManagerClient.html" -a -z "$(find "$PACKAGE/docs/api" -name '*.js')" ]

echo "== its README, verbatim"
blocks "$PACKAGE/README.md" cpp > host.cpp
blocks "$PACKAGE/README.md" cmake > CMakeLists.txt
(
  # The other account's name is in another script.
  sed -i 's/ada@example.com/zoe@example.com/; s/analytical engine/κωδικός/' host.cpp
  eval "set -x; $(blocks "$PACKAGE/README.md" sh)"
) > readme.log 2>&1 || { cat readme.log && exit 1; }
cp -r build-standins/OrvelLoginManagerClient build
cp -r "$PACKAGE/examples/standins/OrvelLoginManagerClient" build-toolchain
for folder in . build build-toolchain; do
  host_says "$folder/host.exe" 0 "signed in: Ζωή Παπαδοπούλου"
done
ORVEL_STANDIN='login=status 1' host_says host.exe 1 "refused, code 1"
ORVEL_STANDIN='login=throw System.TimeoutException время' host_says host.exe 1 "System.TimeoutException: время"
for example in "$PACKAGE"/examples/*/CMakeLists.txt; do
  folder=$(dirname "$example")
  name=examples/${folder##*/}
  {
    cmake -S "$folder" -B "$name" -G Ninja "-DCMAKE_PREFIX_PATH=$PACKAGE" \
      "-DCMAKE_TOOLCHAIN_FILE=$PACKAGE/cmake/mingw-x86.cmake"
    cmake --build "$name"
  } > example.log 2>&1 || { cat example.log && exit 1; }
done

echo "== headers alone"
gcc=$(dirname "$(i686-w64-mingw32-g++-posix -print-libgcc-file-name)")
clang=(clang++ --target=i686-w64-mingw32 -isystem "$gcc/include/c++" -isystem "$gcc/include/c++/i686-w64-mingw32"
  -isystem "$gcc/include/c++/backward")
find "$PACKAGE/include" -name '*.h' | while IFS= read -r header; do
  for compiler in i686-w64-mingw32-g++-posix "${clang[*]}"; do
    # shellcheck disable=SC2086  # a command with its options
    $compiler -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I "$PACKAGE/include" -include "$header" -x c++ /dev/null
  done
done

echo "== the files"
resources() { i686-w64-mingw32-windres -i "$1" -O rc; }
for file in "$PACKAGE"/bin/orv*; do
  resources "$file" > resources.rc
  for entry in ' FILEVERSION '"${version//./, }, 0" 'BLOCK "040904B0"' '"Translation", 0x409, 1200' \
    '"CompanyName", "The Orvel login library authors"' '"ProductVersion", "'"$version"'"' \
    '"LegalCopyright", "Copyright (c) 2026 the Orvel login library authors. MIT licence."' \
    '"OriginalFilename", "'"${file##*/}"'"'; do
    expect "${file##*/} has $entry" grep -qF "$entry" resources.rc
  done
  i686-w64-mingw32-objdump -p "$file" > headers
  for pair in MajorOSystemVersion:6 MinorOSystemVersion:1 MajorSubsystemVersion:6 MinorSubsystemVersion:1; do
    same "${pair%:*} of ${file##*/}" "${pair#*:}" "$(sed -n "s/^${pair%:*}\t*//p" headers)"
  done
  i686-w64-mingw32-objdump -h "$file" > sections
  expect "${file##*/} is without debug information" [ "$(grep -c '\.debug_info' sections)" = 0 ]
  expect "${file##*/} names its debug file" grep -q '\.gnu_debuglink' sections
  debug=$(echo orvellogin-*-debug)/${file##*/}.debug
  address=$(i686-w64-mingw32-nm "$debug" | sed -n 's/ [Tt] _*\(wmain\|.*ManagerClient13getTenantName.*\)$//p' | head -1)
  expect "addresses of ${file##*/} are found" grep -qE '\.cpp:[0-9]+$' \
    <(i686-w64-mingw32-addr2line -e "$debug" "$address")
done
# Wine tells each program the version of Windows that is set for it, but as Windows does, none that its manifest lacks.
key='HKCU\Software\Wine\AppDefaults\orvdiag.exe'
"$source/script/wine-run" reg add "$key" /v Version /d win10 /f > /dev/null
facts=$("$source/script/wine-run" "$PACKAGE/bin/orvdiag.exe" facts)
checked=$("$source/script/wine-run" "$PACKAGE/bin/orvdiag.exe" check || true)
expect "the files of the package are as built" grep -q "^ok .*complete and as built" <<< "$checked"
"$source/script/wine-run" reg delete "$key" /f > /dev/null
expect "orvdiag.exe is told of Windows 10" grep -q '^osversion  *10,0' <<< "$facts"
expect "an example carries the version" grep -qF "\"$version\"" <(resources "$build/bin/signin-window.exe")
expect "the managed part carries its version" grep -qF "\"$version.0\"" <(resources "$PACKAGE/bin/OrvelLoginClientCLR.dll")
rm -rf "$scratch"
