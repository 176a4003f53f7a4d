#!/usr/bin/env bash
# The generators do without exceptions; the layer's headers say in their first error that they don't.
. "$(dirname "$0")/common.sh"

flags=(-std=c++17 -fno-exceptions -Wall -Wextra -Werror -I"$source_dir/src" -I"$source_dir/layer")
"${CXX:-c++}" "${flags[@]}" "$tests/consumer/generators.cpp" "$source_dir"/src/*/*.cpp -pthread -o generators
./generators

for header in LoggedCall.h CallLog.h; do
  if echo "#include <$header>" | "${CXX:-c++}" "${flags[@]}" -fsyntax-only -x c++ - 2>errors.txt; then
    fail "$header was compiled"
  fi
  grep -m 1 'error:' errors.txt | grep 'The layer of ScrivelXmlGen needs exceptions' || fail "$(<errors.txt)"
done
