#!/bin/bash
# hosts.sh SOURCE BUILD ARCHITECTURE COMPILER [HEADING]: builds the sign-in examples by a compiler from the installed package, as a user
# does, or by the commands that the page for users gives under a heading, and runs them. All of them print the same.
set -euo pipefail
source=$1 build=$2 architecture=$3 compiler=$4 heading=${5:-}
. "$source/script/prologue"
package=$build/tests/hosts/package
scratch=$build/tests/hosts/$compiler
rm -rf "$scratch"
mkdir -p "$scratch"
cd "$scratch"

configure_and_build() { # CMAKE-OPTION...
  cmake -S "$source/tests/hosts/project" -B . -G Ninja "-DCMAKE_PREFIX_PATH=$package" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH "-DEXAMPLES=$source/examples" "$@"
  cmake --build .
}

triple=i686-w64-mingw32 bits=32
[ "$architecture" = x86 ] || triple=x86_64-w64-mingw32 bits=64 hosts=$hosts_x64

# The commands that docs/integration.md gives under a heading: verbatim, or with the names for 64 bits.
commands_of() { # HEADING
  # shellcheck disable=SC2016  # the backquotes are the page's
  sed -n "/^### $1\$/,/^##/p" "$source/docs/integration.md" | sed -n '/^```sh$/,/^```$/{/^```/d;p}' |
    sed "s/i686-w64-mingw32/$triple/; s/-platform:x86/-platform:$architecture/; s/-Twin32/-Twin$bits/"
}
# Debian's fpc makes no Windows programs.
# shellcheck disable=SC2317  # the page's commands call it
fpc() {
  "$hosts/fpc/pp" -n -v0 "-Fu$hosts/fpc/units" "$@"
}

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
      eval "$triple-g++-posix -std=c++17 '$source/examples/signin/main.cpp' -o $name.exe \
        $(PKG_CONFIG_PATH=$package/lib/pkgconfig pkg-config --cflags --libs $name)"
    done
    ;;
  clang-cl)
    configure_and_build "-DCMAKE_TOOLCHAIN_FILE=$source/tests/hosts/clang-cl/clang-cl.cmake" "-DHOSTS=$hosts" "-DBITS=$bits"
    ;;
  *) eval "$(commands_of "$heading")" ;;
esac
cp -r "$build/bin/OrvelLoginManagerClient" .

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
  printf 'cmake_minimum_required(VERSION 3.21)\nfind_package(orvellogin CONFIG REQUIRED)\n' > find.cmake
  refuses "is for $architecture programs only" cmake -DCMAKE_SIZEOF_VOID_P=2 "-DCMAKE_PREFIX_PATH=$package" -P find.cmake
  refuses 'link orvellogin::client' $triple-g++-posix -std=c++17 -D_GLIBCXX_USE_CXX11_ABI=0 -fsyntax-only \
    -I "$package/include" "$source/examples/signin/main.cpp"
fi

# What the examples do not show: a zero unit in a text, a language, the last user, the offline flag.
expected='offline 3 https://apps.example.com/7 Ada signed in again; Ada signed in again (0)'
if [ "$compiler" = csharp ]; then
  echo 'class Null { static void Main() { new Orvel.Login.LoginManagerClient().FormatAccessUrl(null); } }' > null.cs
  cat > rest.cs << 'END'
class Rest {
  static void Main() {
    var client = new Orvel.Login.LoginManagerClient(null, null, 7) { OfflineMode = true };
    System.Console.Error.Write(client.OfflineMode ? "offline " : "");
    client.OfflineMode = false;
    client.Login("ada@example.com", "analytical engine");
    System.Console.Error.Write("{0} {1} {2}; {3}", client.FormatAccessUrl("a\0b").Length, client.GetMyAppsUrl(),
      client.Login().StatusDescription, client.GetLoggedInUser(true).StatusDescription);
  }
}
END
  for name in null rest; do mcs "-platform:$architecture" -out:$name "$PACKAGE/bindings/csharp/OrvelLogin.cs" $name.cs; done
  refuses 'System.ArgumentNullException: ' "$source/script/wine-run" null
  expect 'what the examples do not show' "$expected" "$(ends rest 'formatAccessURL=echo')"
elif [ "$compiler" = pascal ]; then
  cat > rest.pas << 'END'
program rest;
uses OrvelLogin;
var Client: TLoginManagerClient;
begin
  Client := TLoginManagerClient.Create(nil, nil, nil, nil, 7);
  Client.OfflineMode := True;
  if Client.OfflineMode then Write(StdErr, 'offline ');
  Client.OfflineMode := False;
  Client.Login('ada@example.com', 'analytical engine');
  Write(StdErr, Length(Client.FormatAccessUrl('a'#0'b')), ' ', Client.GetMyAppsUrl, ' ',
    Client.Login.StatusDescription, '; ', Client.GetLoggedInUser(True).StatusDescription);
end.
END
  fpc -Twin$bits -Fu"$PACKAGE/bindings/pascal" -FU. -orest rest.pas
  expect 'what the examples do not show' "$expected" "$(ends rest 'formatAccessURL=echo')"
fi

null='System.ArgumentNullException: NULLPTR is not supported for this conversion.
  HRESULT 0x80004003'
for program in *.exe; do
  echo "== $program"
  # Events on a thread of their own, after a garbage collection that frees every delegate that nobody holds.
  ORVEL_STANDIN='events=thread;getTenantName=collect;Dispose=event' "$source/script/wine-run" "$program" > output 2>&1 || true
  sed -E 's/\r$//; s/thread [0-9]+/thread N/; s/[0-9a-f]{32}/TOKEN/; s/[0-9]{18}\./EXPIRES./' output |
    diff -u "$source/tests/hosts/signin.txt" - || failures=$((failures + 1))
  expect "$program, a report" 'the login manager reports code 8 (1)' "$(ends "$program" 'Logout=status 42')"
  expect "$program, no record" 'the login manager reports code 6 (1)' "$(ends "$program" 'login=null')"
  expect "$program, another failure" $'System.TimeoutException: κείμενο 🦉\n  HRESULT 0x80131505 (1)' \
    "$(ends "$program" 'getSpaceURL=throw System.TimeoutException κείμενο 🦉')"
  expect "$program, a null" "$null (1)" "$(ends "$program" 'rowId=null')"
  expect "$program, a missing null" "$null (1)" "$(ends "$program" 'getLoginTicket=null')"
done
exit $failures
