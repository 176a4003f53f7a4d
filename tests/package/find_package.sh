#!/usr/bin/env bash
# A consumer finds what is installed by find_package alone, and the libraries find each other.
. "$(dirname "$0")/common.sh"

build "$tests/consumer" build -DCMAKE_PREFIX_PATH="$installed"
build/generators
build/layer

# The reader is there where the libraries that it needs were.
if [[ -x $installed/bin/scrivel ]]; then
  build "$tests/reading" reading -DCMAKE_PREFIX_PATH="$installed"
  reading/reading
  "$installed/bin/scrivel" --version
fi

shopt -s nullglob
for library in "$installed"/lib*/*.so; do
  ldd "$library" | tee ldd.txt
  ! grep -q 'not found' ldd.txt || fail "$library doesn't find what it needs"
done
