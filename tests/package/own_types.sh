#!/usr/bin/env bash
# The library is built against declarations that are not its own: every record has further fields before
# and behind, texts are longer, no enumeration has a fixed underlying type.
. "$(dirname "$0")/common.sh"

mkdir cadi
sed -E -e 's/^(enum \w+) : std::int32_t$/\1/' \
  -e '/^struct \w+$/,/^\};$/ { s/^\{$/{\n    double vendorTime;/; s/^\};$/    void* vendorData;\n};/ }' \
  -e 's/\[1024\]/[2000]/' "$source_dir/src/cadi/CADITypes.h" >cadi/CADITypes.h
if cmp -s cadi/CADITypes.h "$source_dir/src/cadi/CADITypes.h" || grep -q ' : std::int32_t' cadi/CADITypes.h; then
  fail "The declarations are not other ones"
fi

build "$source_dir" build "${library_only[@]}" -DSCRIVEL_CADI_INCLUDE_DIR="$work/cadi" \
  -DSCRIVEL_WARNINGS_AS_ERRORS=ON
cmake --install build --prefix "$work/installed"
[[ ! -e installed/include/ScrivelXmlGen/CADITypes.h ]] || fail "Declarations were installed"

build "$tests/own_types" consumer -DCMAKE_PREFIX_PATH="$work/installed" \
  -DSCRIVEL_CADI_INCLUDE_DIR="$work/cadi"
consumer/own_types

# Without those declarations the library is not to be had.
if cmake -S "$tests/own_types" -B without -DCMAKE_PREFIX_PATH="$work/installed" 2>without.txt; then
  fail "The library was found without its declarations"
fi
grep -q SCRIVEL_CADI_INCLUDE_DIR without.txt || fail "The message doesn't say what is missing"
