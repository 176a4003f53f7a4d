#!/usr/bin/env bash
# A consumer without CMake finds what is installed by pkg-config.
. "$(dirname "$0")/common.sh"

PKG_CONFIG_PATH=$(echo "$installed"/lib*/pkgconfig)
export PKG_CONFIG_PATH LD_LIBRARY_PATH=${PKG_CONFIG_PATH%/pkgconfig}
for program in generators:ScrivelXmlGen layer:ScrivelXmlGenLayer; do
  read -ra flags <<<"$(pkg-config --cflags --libs "${program#*:}")"
  "${CXX:-c++}" -std=c++17 "$tests/consumer/${program%:*}.cpp" "${flags[@]}" -o "${program%:*}"
  "./${program%:*}"
done
[[ " $(pkg-config --cflags --libs ScrivelXmlGen) " == *" -pthread "*" -pthread "* ]] ||
  fail "Compiler and linker aren't told of threads"
pkg-config --exact-version=2.0.0 ScrivelXmlGen ScrivelXmlGenLayer
