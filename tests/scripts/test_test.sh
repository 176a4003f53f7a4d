#!/usr/bin/env bash
# What scripts/test says, that it tells an old CMake in one line, and with what it builds where the path has
# an apostrophe. CMake and CTest are made up here.
set -euo pipefail

source_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

fail() {
  printf '%s\n' "$*" "---- It said:" "$(<"$scratch/said")" >&2
  exit 1
}

# A checkout whose path has a blank and an apostrophe.
checkout="$scratch/some one's"
mkdir -p "$checkout" "$scratch/bin"
cp -R "$source_dir/scripts" "$checkout"

cat >"$scratch/bin/cmake" <<'CMAKE'
#!/bin/sh
case "$*" in
  --version) echo "cmake version ${CMAKE_IS:-3.25.1}" ;;
  --preset*) printf '%s\n' "$*" >>"$CONFIGURED" ;;
  --build*)
    seq -f "[%g/2000] Building" 2000
    case "$*" in *"--preset $UNBUILDABLE "*) printf 'FAILED: x.o\nx.cpp:1: error\n'; exit 1 ;; esac ;;
esac
CMAKE
cat >"$scratch/bin/ctest" <<'CTEST'
#!/bin/sh
case "$*" in
  *"--preset $RED "*) printf '90%% tests passed, 1 tests failed out of 10\n\nFailed: it\n'; exit 8 ;;
esac
echo "100% tests passed, 0 tests failed out of 10"
CTEST
printf '#!/bin/sh\necho installed\n' >"$scratch/bin/dpkg-query"
chmod +x "$scratch"/bin/*

# Runs scripts/test with the environment that precedes the "--".
said() {
  local environment=() status=0
  while [[ $1 != -- ]]; do
    environment+=("$1")
    shift
  done
  shift
  env PATH="$scratch/bin:$PATH" CONFIGURED="$scratch/configured" UNBUILDABLE=none RED=none \
    "${environment[@]}" "$checkout/scripts/test" "$@" >"$scratch/said" 2>&1 || status=$?
  echo "$status"
}

[[ $(said --) == 0 ]] || fail "Presets that pass end with another status."
[[ $(head -n 1 "$scratch/said") == "All presets: "*"\"scripts/test dev\" is the short one"* ]] ||
  fail "The first line doesn't tell how long it takes."
[[ $(tail -n 2 "$scratch/said") == \
  $'All presets passed (dev release clang tsan): 40 tests.\n40 passed, 0 failed' ]] ||
  fail "The last lines don't tell that all presets passed."
(($(wc -l <"$scratch/said") < 50)) || fail "The lines of the builds are not kept in a file."
(($(wc -l <"$checkout/build/clang.build.log") == 2000)) || fail "The file hasn't the lines of the build."

(($(grep -c -- '^--preset .* -G Unix Makefiles$' "$scratch/configured") == 4)) ||
  fail "Where the path has an apostrophe, Ninja would make all anew each time."

[[ $(said -- dev) == 0 ]] || fail "One preset that passes ends with another status."
[[ $(head -n 1 "$scratch/said") == "==== dev" ]] || fail "The short run is told to take long."
[[ $(tail -n 1 "$scratch/said") == "10 passed, 0 failed" ]] || fail "Its last line is another one."

[[ $(said RED=release --) == 1 ]] || fail "A failed test ends with another status."
[[ $(tail -n 1 "$scratch/said") == "39 passed, 1 failed" ]] || fail "A failed test isn't counted."
grep -q '^==== release failed$' "$scratch/said" || fail "The failed preset isn't named."

[[ $(said UNBUILDABLE=clang --) == 1 ]] || fail "A preset that doesn't build ends with another status."
[[ $(tail -n 1 "$scratch/said") == "30 passed, 1 failed" ]] || fail "It isn't counted."
grep -q '^x.cpp:1: error$' "$scratch/said" || fail "The error isn't shown."
(($(wc -l <"$scratch/said") < 60)) || fail "More than the error is shown."

[[ $(said CMAKE_IS=3.18.4 -- dev) == 1 ]] || fail "An old CMake ends with another status."
grep -q '^CMake 3.18.4 is too old: test needs 3.21, as Debian 12 and Ubuntu 22.04 have\.' \
  "$scratch/said" || fail "An old CMake isn't told in one line."
