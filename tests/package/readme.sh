#!/bin/bash
# readme.sh SOURCE BUILD: builds the host printed in README by the command printed there, and runs it.
. "$(dirname "$0")/../support/checks.sh"
blocks "$source/README.md" cpp > host.cpp
# README names the release build and a host.cpp in the checkout; everything else stands as it is there.
command=$(blocks "$source/README.md" sh | sed -n '/^i686-w64-mingw32-g++/,/[^\\]$/p')
command=${command//build\/mingw-x86-release/\"\$build\"}
(
  cd "$source"
  set -x
  eval "${command//host.cpp/\"\$scratch/host.cpp\"}"
)
host_says "$build/bin/host.exe" 0 "signed in: Ada Lovelace"
ORVEL_STANDIN='login=status 1' host_says "$build/bin/host.exe" 1 "refused, code 1"
ORVEL_STANDIN='login=throw System.TimeoutException время' host_says "$build/bin/host.exe" 1 "System.TimeoutException: время"
rm "$build/bin/host.exe"
