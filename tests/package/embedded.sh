#!/usr/bin/env bash
# A parent project that takes the library in, by $3, gets its targets and nothing else: no test, no
# warning, nothing installed.
. "$(dirname "$0")/common.sh"

if [[ $3 == FetchContent ]]; then
  cmake -S "$source_dir" -B archive "${library_only[@]}" -DSCRIVEL_BUILD_PACKAGES=ON
  (cd archive && cpack --config CPackSourceConfig.cmake)
  way=(-DSCRIVEL_ARCHIVE="$(echo "$work"/archive/ScrivelXmlGen-*.tar.gz)")
else
  way=(-DSCRIVEL_SOURCE_DIR="$source_dir")
fi
build "$tests/embedding" build "${way[@]}" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
ctest --test-dir build --output-on-failure | tee tests.txt

grep -q '100% tests passed, 0 tests failed out of 2' tests.txt ||
  fail "The parent's tests are not its own two"
grep '"command"' build/compile_commands.json | grep -e ' -W' &&
  fail "The library's warnings reach the build of its parent"
DESTDIR=$work/installed cmake --install build
[[ ! -e installed ]] || fail "The library is installed with its parent"
