#!/usr/bin/env bash
# Runs the connectivity tester's network tests, in the network of zelnet.sh: connectivity.sh ARCH
exec "$(dirname "$0")/zelnet.sh" "$1" "build/$1/tests/test_dll.exe"
