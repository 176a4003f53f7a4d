#!/usr/bin/env bash
# The shared libraries show the names that are listed here, and no other. After a wanted change:
#   scripts/test release -R Package, then copy build/release/tests/package/Shared*Only/*.txt over the lists
. "$(dirname "$0")/common.sh"

for library in ScrivelXmlGen ScrivelXmlGenLayer ScrivelXmlGenReader; do
  nm -DC --defined-only --without-symbol-versions "$installed"/lib*/lib$library.so |
    cut -d ' ' -f 3- | LC_ALL=C sort -u >$library.txt
done
diff -r "$tests/symbols" "$work"
