#!/usr/bin/env bash
# The library is built against declarations that are not its own: every record has further fields before
# and after, one has a base, texts are longer, no enumeration has a fixed underlying type.
. "$(dirname "$0")/common.sh"

mkdir cadi
sed -E -e 's/^(enum \w+) : std::int32_t$/\1/' \
  -e '/^struct \w+$/,/^\};$/ { s/^\{$/{\n    double vendorTime;/; s/^\};$/    void* vendorData;\n};/ }' \
  -e 's/\[1024\]/[2000]/' "$source_dir/src/cadi/CADITypes.h" |
  sed 's/^struct CADIReg_t$/struct VendorHeader\n{\n    double vendorVersion;\n};\n\n& : VendorHeader/' >cadi/CADITypes.h
if cmp -s cadi/CADITypes.h "$source_dir/src/cadi/CADITypes.h" || grep -q ' : std::int32_t' cadi/CADITypes.h; then
  fail "The declarations are not other ones"
fi

build "$source_dir" build -DSCRIVEL_CADI_INCLUDE_DIR="$work/cadi" -DSCRIVEL_WARNINGS_AS_ERRORS=ON \
  -DSCRIVEL_BUILD_TOOL=OFF
[[ ! -e build/tests && ! -e build/examples ]] || fail "Tests or examples were built with other declarations"
cmake --install build --prefix "$work/installed"
[[ ! -e installed/include/ScrivelXmlGen/CADITypes.h ]] || fail "Declarations were installed"

build "$tests/own_types" consumer -DCMAKE_PREFIX_PATH="$work/installed" \
  -DSCRIVEL_CADI_INCLUDE_DIR="$work/cadi"
consumer/own_types

# With other ones a program doesn't link.
if "${CXX:-c++}" -std=c++17 -I"$source_dir/src/cadi" -Iinstalled/include/ScrivelXmlGen \
  "$tests/consumer/generators.cpp" -L"$(echo installed/lib*)" -lScrivelXmlGen -pthread -o other 2>other.txt; then
  fail "A program was linked that sees other declarations"
fi
grep -q ScrivelXmlGen_was_built_with_another_CADITypes_h_than other.txt || fail "The linker doesn't say why"

# Without those declarations the library is not to be had.
if cmake -S "$tests/own_types" -B without -DCMAKE_PREFIX_PATH="$work/installed" 2>without.txt; then
  fail "The library was found without its declarations"
fi
grep -q SCRIVEL_CADI_INCLUDE_DIR without.txt || fail "The message doesn't say what is missing"
