#!/usr/bin/env bash
# Prints the lines of code and of tests that are not blank, and fails when the tests are not a quarter to a third of
# the other code. Fuzzers count as tests; build files and scripts count as what they serve; data counts as neither.
# shellcheck source=scripts/lib.sh
source "$(dirname "$0")/lib.sh"

least=25 most=33

lines() {
  find "$@" -type f \( -name '*.h' -o -name '*.cpp' -o -name '*.sh' -o -name '*.map' -o -name '*.cmake' \
    -o -name 'CMake*' -o -path 'scripts/*' -o -path '.ci/*' \) -exec cat {} + | grep -c '[^[:space:]]'
}

code=$(lines src host examples bench scripts cmake .ci CMakeLists.txt CMakePresets.json)
tests=$(lines tests fuzz)
share=$((100 * tests / code))
echo "$code lines of code, $tests lines of tests: $share % (wanted: $least to $most)"
((share >= least && share <= most))
