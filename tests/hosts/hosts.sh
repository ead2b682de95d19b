#!/bin/bash
# hosts.sh SOURCE BUILD ARCHITECTURE COMPILER [HEADING]: builds the sign-in examples by a compiler from the installed package,
# as a user does, or by the commands that the page for users gives under a heading, and runs them. All of them print the same.
set -euo pipefail
source=$1 build=$2 architecture=$3 compiler=$4 heading=${5:-}
. "$source/script/prologue"
triple=i686-w64-mingw32 bits=32
[ "$architecture" = x86 ] || triple=x86_64-w64-mingw32 bits=64 hosts=$hosts_x64
# Everything is reached through a folder whose name contains what scripts get wrong.
odd="$build/tests/Клон mit 'Ümlaut"
if [ "$compiler" = install ]; then
  mkdir -p "$build/tests/hosts"
  ln -sfn hosts "$odd"
  ln -sfn hosts "${odd//\'/}"
  ln -sfn "$source" "$odd/source"
  ln -sfn "$hosts" "$odd/compilers"
fi
source=$odd/source hosts=$odd/compilers package=$odd/package scratch=$odd/$compiler
rm -rf "$scratch"
mkdir -p "$scratch"
cd "$scratch"

configure_and_build() { # CMAKE-OPTION...
  cmake -S "$source/tests/hosts/project" -B "$scratch" -G Ninja "-DCMAKE_PREFIX_PATH=$package" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH "-DEXAMPLES=$source/examples" "$@"
  cmake --build "$scratch"
}

# The commands that docs/integration.md gives under a heading: verbatim, or with the names for 64 bits.
commands_of() { # HEADING
  # shellcheck disable=SC2016  # the backquotes are the page's
  sed -n "/^### $1\$/,/^##/p" "$source/docs/integration.md" | sed -n '/^```sh$/,/^```$/{/^```/d;p}' |
    sed "s/i686-w64-mingw32/$triple/; s/-platform:x86/-platform:$architecture/; s/-Twin32/-Twin$bits/; s#/x86#/$architecture#g"
}
# The page's fpc is a Free Pascal for Windows, which Debian does not have.
if [ "$compiler" = pascal ]; then
  mkdir free-pascal
  ln -s "$hosts/fpc/pp" free-pascal/fpc
  # By its real path: it cannot link what is in a folder whose name contains "'".
  printf '%s\n' -v0 "-Fu$(realpath "$hosts/fpc/units")" > free-pascal/fpc.cfg
  export PATH=$scratch/free-pascal:$PATH PPC_CONFIG_PATH=$scratch/free-pascal
fi

export PACKAGE=$package
case $compiler in
  install)
    rm -rf "$package"
    cmake --install "$build" --prefix "$package"
    exec cmake --install "$build" --prefix "$package" --component zip
    ;;
  mingw)
    configure_and_build "-DCMAKE_TOOLCHAIN_FILE=$source/cmake/mingw-$architecture.cmake"
    for name in orvellogin orvellogin-client; do
      # pkg-config does not escape "'" in the path of its file.
      eval "options=($(PKG_CONFIG_PATH=${package//\'/}/lib/$architecture/pkgconfig pkg-config --cflags --libs "$name"))"
      $triple-g++-posix -std=c++17 "$source/examples/signin/main.cpp" -o "$name.exe" "${options[@]}"
    done
    ;;
  clang-cl)
    configure_and_build "-DCMAKE_TOOLCHAIN_FILE=$source/tests/hosts/clang-cl/clang-cl.cmake" "-DHOSTS=$hosts" "-DBITS=$bits"
    ;;
  *) eval "$(commands_of "$heading")" ;;
esac
[ -d OrvelLoginManagerClient ] || cp -r "$build/bin/OrvelLoginManagerClient" .

# What it prints to standard error, and the status.
ends() { # PROGRAM COMMANDS
  local status=0
  ORVEL_STANDIN=$2 "$source/script/wine-run" "$1" > /dev/null 2> errors || status=$?
  echo "$(tr -d '\r' < errors) ($status)"
}

failures=0
expect() { # WHAT WANTED GOT
  [ "$2" = "$3" ] || {
    printf '%s\n  wanted: %s\n  got:    %s\n' "$1" "$2" "$3"
    failures=$((failures + 1))
  }
}

# What is not supported is refused with an explanation, which CMake breaks into lines.
refuses() { # EXPLANATION COMMAND...
  local explanation=$1 output
  shift
  output=$("$@" 2>&1 || true)
  tr -s '\n ' ' ' <<< "$output" | grep -qF "$explanation" || expect "refusal by $1" "$explanation" "$output"
}
if [ "$compiler" = mingw ]; then
  cat > find.cmake << 'END'
cmake_minimum_required(VERSION 3.21)
find_package(orvellogin ${VERSION} CONFIG REQUIRED COMPONENTS ${COMPONENT})
END
  own=4 other="x64|-DCMAKE_SIZEOF_VOID_P=8"
  [ "$architecture" = x86 ] || own=8 other="x86|-DCMAKE_SIZEOF_VOID_P=4"
  while IFS='|' read -r explanation options; do
    # shellcheck disable=SC2086  # a list of options
    refuses "$explanation" cmake "-DCMAKE_PREFIX_PATH=$package" $options -P find.cmake
  done << END
is for Windows programs, and this project is configured for "Linux"|-DCMAKE_SYSTEM_NAME=Linux
architecture is not known yet|-DWIN32=1
serves $architecture, and this project is configured for $other -DWIN32=1
configured for ARM|-DWIN32=1 -DCMAKE_SIZEOF_VOID_P=$own -DMSVC=1 -DCMAKE_CXX_COMPILER_ARCHITECTURE_ID=ARM
has no component "clients"; its components are|-DWIN32=1 -DCMAKE_SIZEOF_VOID_P=$own -DCOMPONENT=clients
compatible with requested version "99"|-DWIN32=1 -DCMAKE_SIZEOF_VOID_P=$own -DVERSION=99
use the component "client"|-DWIN32=1 -DCMAKE_SIZEOF_VOID_P=$own -DCOMPONENT=orvellogin
END
  printf '#define ORVELLOGIN_HEADER_ONLY\n#include "login/LoginManagerClient.h"\n' > other.cpp
  refuses exported_and_header_only_class_in_one_program $triple-g++-posix -std=c++17 -I "$package/include" \
    "$source/examples/signin/main.cpp" other.cpp "$package/lib/$architecture"/liborvellogin{,c}.dll.a
fi

# What the examples do not show. The events of a client that is gone belong to the one that is left.
version=$(sed -n 's/^project(orvellogin VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
expected="$version offline, the login manager reported error 1, 3, https://apps.example.com/7, Ada signed in again,"
expected+=' Ada signed in again, 4 sign-ins'
if [ "$compiler" = csharp ]; then
  cat > rest.cs << 'END'
using System;
using System.Collections.Generic;
using Orvel.Login;

class Rest {
  static string Failure(Action call) {
    try { call(); } catch (ArgumentNullException failure) { return failure.ParamName; } catch (Exception failure) { return failure.Message; }
    return "none";
  }

  static void AddClient(List<WeakReference> held) {
    var one = new object();
    held.Add(new WeakReference(one));
    using (var client = new LoginManagerClient(() => GC.KeepAlive(one), () => GC.KeepAlive(one)))
      client.Login("ada@example.com", "analytical engine");
  }

  static void Main() {
    int events = 0;
    var client = new LoginManagerClient(() => events++, null, 7) { OfflineMode = true };
    Console.Error.Write("{0} {1}, ", LoginManagerClient.LibraryVersion, client.OfflineMode ? "offline" : "online");
    client.OfflineMode = false;
    Console.Error.Write("{0}, ", Failure(() => client.Login("ada@example.com", "")));
    client.Login("ada@example.com", "analytical engine");
    var held = new List<WeakReference>();
    for (int i = 0; i < 20; i++)
      AddClient(held);
    Console.Error.Write("{0}, {1}, {2}, {3}, ", client.FormatAccessUrl("a\0b").Length, client.GetMyAppsUrl(),
      client.Login().StatusDescription, client.GetLoggedInUser(true).StatusDescription);
    client.Login("ada@example.com", "analytical engine");
    Console.Error.Write("{0} sign-ins; ", events);
    GC.Collect();
    GC.WaitForPendingFinalizers();
    GC.Collect();
    Console.Error.Write(held.FindAll(one => one.IsAlive).Count < 10 ? "collected" : "kept");
    foreach (Action call in new Action[] {
        () => client.Login(null, ""), () => client.Login("", null), () => client.FormatAccessUrl(null), () => client.GetLoginTicket(null),
        () => client.DunmoreLoginBrowser(null, ""), () => client.DunmoreLoginBrowser("", null),
        () => client.IsDunmorePlatformTokenExpired(null) })
      Console.Error.Write(" " + Failure(call));
    client.Dispose();
    try { client.GetTenantName(); } catch (ObjectDisposedException) { Console.Error.Write(" disposed"); }
  }
}
END
  # As strictly as a host may compile it, with the library's files where a program for both architectures has them.
  mkdir -p "both/$architecture"
  mcs -langversion:5 -warnaserror -doc:rest.xml "-platform:$architecture" -out:both/rest.exe \
    "$PACKAGE/bindings/csharp/OrvelLogin.cs" rest.cs
  cp -r "$PACKAGE/bin/$architecture"/{orvelloginc,OrvelLoginClientCLR}.dll OrvelLoginManagerClient "both/$architecture"
  expect 'what the example does not show' \
    "$expected; collected userName password targetUrl spaceUrl server clientId token disposed (0)" \
    "$(ends both/rest.exe 'formatAccessURL=echo')"
elif [ "$compiler" = pascal ]; then
  cat > rest.pas << 'END'
program rest;
{$MODE DELPHI}
uses SysUtils, OrvelLogin;
var
  Client: TLoginManagerClient;
  SignIns: Integer;
type
  TEvents = class
    class procedure SignedIn;
    class procedure Lost;
  end;
class procedure TEvents.SignedIn; begin Inc(SignIns) end;
class procedure TEvents.Lost; begin SignIns := -99 end;
begin
  Client := TLoginManagerClient.Create(TEvents.SignedIn, nil, 7);
  Client.OfflineMode := True;
  Write(StdErr, Format('%d.%d.%d ', [Client.LibraryVersion div 10000, Client.LibraryVersion div 100 mod 100, Client.LibraryVersion mod 100]));
  if Client.OfflineMode then Write(StdErr, 'offline, ');
  Client.OfflineMode := False;
  try Client.Login('ada@example.com', '') except on Refused: ELoginManager do Write(StdErr, Refused.Message, ', ') end;
  Client.Login('ada@example.com', 'analytical engine');
  with TLoginManagerClient.Create(TEvents.Lost, TEvents.Lost) do begin GetTenantName; Free end;
  Write(StdErr, Length(Client.FormatAccessUrl('a'#0'b')), ', ', Client.GetMyAppsUrl, ', ',
    Client.Login.StatusDescription, ', ', Client.GetLoggedInUser(True).StatusDescription, ', ');
  Client.Login('ada@example.com', 'analytical engine');
  Write(StdErr, SignIns, ' sign-ins');
end.
END
  fpc -Twin$bits -Fu"$PACKAGE/bindings/pascal" -FU. -orest rest.pas
  expect 'what the example does not show' "$expected (0)" "$(ends rest 'formatAccessURL=echo')"
fi

for program in *.exe; do
  echo "== $program"
  # Events on a thread of their own, after a garbage collection that frees every delegate that nobody holds.
  ORVEL_STANDIN='events=thread;getTenantName=collect;Dispose=event' "$source/script/wine-run" "$program" > output 2>&1 || true
  sed -E 's/\r$//; s/thread [0-9]+/thread N/; s/[0-9a-f]{32}/TOKEN/; s/[0-9]{18}\./EXPIRES./' output |
    diff -u "$source/tests/hosts/signin.txt" - || failures=$((failures + 1))
  expect "$program, a failure" $'System.TimeoutException: κείμενο 🦉\n  HRESULT 0x80131505 (1)' \
    "$(ends "$program" 'getSpaceURL=throw System.TimeoutException κείμενο 🦉')"
done
exit $failures
