#!/bin/bash
# package.sh SOURCE BUILD: uses the ZIP as its users do.
. "$(dirname "$0")/../support/checks.sh"
version=$(sed -n 's/^project(orvellogin VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
export SOURCE_DATE_EPOCH=1234567890
mkdir first
TZ=UTC-9 python3 "$source/packaging/package.py" "$build"
mv "$build/orvellogin-$version"{,-debug}.zip "$build/Orvel.Login.$version.nupkg" first
TZ=UTC+5 python3 "$source/packaging/package.py" "$build"
for file in first/*; do
  expect "${file#*/} has the same bytes when it is made again" cmp "$file" "$build/${file#*/}"
done
expect "files have the time that was given" grep -q '2009-02-13 23:31' <(unzip -l "$build/orvellogin-$version.zip")
(cd "$build" && sha256sum --check --quiet "orvellogin-$version.zip.sha256")
unzip -q "$build/orvellogin-$version.zip"
unzip -q "$build/orvellogin-$version-debug.zip"
export PACKAGE=$PWD/orvellogin-$version

echo "== what is in it"
expect "LICENSE and NOTICES lie at the top" [ -s "$PACKAGE/LICENSE" -a -s "$PACKAGE/NOTICES.md" ]
expect "nothing for maintainers" [ ! -e "$PACKAGE/docs/architecture.md" -a ! -e "$PACKAGE/docs/development.md" ]
"$source/script/check-links" "$PACKAGE"
while IFS= read -r header; do
  [[ $header =~ ^(corerror|windows)\.h$ ]] || expect "the pages' $header is there" [ -e "$PACKAGE/include/$header" ]
done < <(cat "$PACKAGE"/*.md "$PACKAGE"/docs/*.md | grep -oE '[A-Za-z/]+\.h\b' | sort -u)
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
for folder in . build build-toolchain; do
  host_says "$folder/host.exe" 0 "signed in: Ζωή Παπαδοπούλου"
done
ORVEL_STANDIN='login=status 1' host_says host.exe 1 "refused, code 1"
ORVEL_STANDIN='login=throw System.TimeoutException время' host_says host.exe 1 "System.TimeoutException: время"
for example in signin signin-c; do # the others are built by the commands above
  {
    cmake -S "$PACKAGE/examples/$example" -B "$example" -G Ninja "-DCMAKE_PREFIX_PATH=$PACKAGE" \
      "-DCMAKE_TOOLCHAIN_FILE=$PACKAGE/cmake/mingw-x86.cmake"
    cmake --build "$example"
  } > example.log 2>&1 || { cat example.log && exit 1; }
done

echo "== headers alone"
find "$PACKAGE/include" -name '*.h' | while IFS= read -r header; do
  i686-w64-mingw32-g++-posix -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I "$PACKAGE/include" \
    -include "$header" -x c++ /dev/null
done

echo "== the files"
resources() { i686-w64-mingw32-windres -i "$1" -O rc; }
for file in "$PACKAGE/bin/$architecture"/orv*; do
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
  debug=orvellogin-$version-debug/$architecture/${file##*/}.debug
  address=$(i686-w64-mingw32-nm "$debug" | sed -n 's/ [Tt] _*\(wmain\|.*ManagerClient13getTenantName.*\|orvellogin_getTenantName.*\)$//p' | head -1)
  expect "addresses of ${file##*/} are found" grep -qE '\.cpp:[0-9]+$' \
    <(i686-w64-mingw32-addr2line -e "$debug" "$address")
done
# Wine tells each program the version of Windows that is set for it, but as Windows does, none that its manifest lacks.
key='HKCU\Software\Wine\AppDefaults\orvdiag.exe'
"$source/script/wine-run" reg add "$key" /v Version /d win10 /f > /dev/null
facts=$("$source/script/wine-run" "$PACKAGE/bin/$architecture/orvdiag.exe" facts)
checked=$("$source/script/wine-run" "$PACKAGE/bin/$architecture/orvdiag.exe" check || true)
expect "the files of the package are as built" grep -q "^ok .*complete and as built" <<< "$checked"
"$source/script/wine-run" reg delete "$key" /f > /dev/null
expect "orvdiag.exe is told of Windows 10" grep -q '^osversion  *10,0' <<< "$facts"
expect "an example carries the version" grep -qF "\"$version\"" <(resources "$build/bin/signin-window.exe")
expect "the managed part carries its version" grep -qF "\"$version.0\"" <(resources "$PACKAGE/bin/$architecture/OrvelLoginClientCLR.dll")

echo "== the NuGet package"
if command -v nuget > nuget.log; then
  HOME=$PWD nuget install Orvel.Login -Source "$build" -OutputDirectory packages > nuget.log || { cat nuget.log && exit 1; }
else # Debian 13 has none
  unzip -q "$build/Orvel.Login.$version.nupkg" -d "packages/Orvel.Login.$version"
fi
installed=packages/Orvel.Login.$version/build
expect "each file of the native half is there" diff -r "$PACKAGE/include" "$installed/native/include"
cat > csharp.csproj << END
<Project DefaultTargets="Build" xmlns="http://schemas.microsoft.com/developer/msbuild/2003">
  <PropertyGroup>
    <OutputType>Exe</OutputType>
    <AssemblyName>csharp</AssemblyName>
    <TargetFrameworkVersion>v4.5</TargetFrameworkVersion>
    <OutputPath>csharp/</OutputPath>
  </PropertyGroup>
  <ItemGroup>
    <Reference Include="mscorlib"><HintPath>/usr/lib/mono/4.5/mscorlib.dll</HintPath><Private>false</Private></Reference>
    <Reference Include="System"><HintPath>/usr/lib/mono/4.5/System.dll</HintPath><Private>false</Private></Reference>
    <Compile Include="orvellogin-$version/examples/signin-csharp/Program.cs" />
  </ItemGroup>
  <Import Project="\$(MSBuildBinPath)/Microsoft.CSharp.targets" />
  <Import Project="$installed/net40/Orvel.Login.targets" />
</Project>
END
# The native half is for Visual C++: xbuild runs its targets, g++ takes its settings.
cat > native.proj << END
<Project DefaultTargets="Build" xmlns="http://schemas.microsoft.com/developer/msbuild/2003">
  <PropertyGroup><OutDir>native/</OutDir></PropertyGroup>
  <Target Name="PrepareForBuild" />
  <Target Name="Build" DependsOnTargets="PrepareForBuild" />
  <Import Project="$installed/native/Orvel.Login.targets" />
</Project>
END
setting() { # ELEMENT
  sed -n "s#\\\\#/#g; s#^ *<$1>\\([^;]*\\).*</$1>\$#\\1#p" "$installed/native/Orvel.Login.targets" | head -1 |
    sed "s#\$(OrvelLoginArchitecture)#$architecture#; s#\$(MSBuildThisFileDirectory)#$installed/native/#"
}
built() { # PROJECT OPTION...
  xbuild /nologo /verbosity:minimal "$@" > built.log 2>&1
}
refused() { # TEXT PROJECT OPTION...
  expect "$2 $3 fails" [ "$(built "${@:2}" && echo built)" = "" ]
  expect "$2 $3 is explained" grep -q "error : Orvel.Login: .*$1" built.log
}
built csharp.csproj /p:PlatformTarget=x86 || { cat built.log && exit 1; }
cp -r "$PACKAGE/examples/standins/OrvelLoginManagerClient" csharp
expect "a program of the NuGet package signs in" grep -q 'firstName  *Ada' <("$source/script/wine-run" csharp/csharp.exe)
built native.proj /p:Platform=Win32 || { cat built.log && exit 1; }
same "what the program is linked with" "\$(OrvelLoginLibrary)" "$(setting AdditionalDependencies)"
i686-w64-mingw32-g++-posix -std=c++17 -static -I "$(setting AdditionalIncludeDirectories)" \
  "-D$(setting PreprocessorDefinitions)" host.cpp -o native/host.exe "$(setting OrvelLoginLibrary)"
cp -r "$PACKAGE/examples/standins/OrvelLoginManagerClient" native
host_says native/host.exe 0 "signed in: Ζωή Παπαδοπούλου"
refused "would be a 64-bit process" csharp.csproj /p:PlatformTarget=AnyCPU
refused "platform target ARM64. It has $architecture" csharp.csproj /p:PlatformTarget=ARM64
refused "platform ARM64. It has Win32" native.proj /p:Platform=ARM64
rm -rf "$scratch"
