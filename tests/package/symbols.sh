#!/usr/bin/env bash
# The shared libraries show the names that are listed here, and no other. After a wanted change:
#   scripts/test release -R Package, then copy build/release/tests/package/Shared*Only/*.txt over the lists
. "$(dirname "$0")/common.sh"

libraries=(ScrivelXmlGen ScrivelXmlGenLayer)
[[ ! -x $installed/bin/scrivel ]] || libraries+=(ScrivelXmlGenReader)
for library in "${libraries[@]}"; do
  nm -DC --defined-only --without-symbol-versions "$installed"/lib*/"lib$library.so" |
    cut -d ' ' -f 3- | LC_ALL=C sort -u >"$library.txt"
  diff "$tests/symbols/$library.txt" "$library.txt"
done
