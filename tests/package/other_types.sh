#!/usr/bin/env bash
# A program that sees another CADITypes.h than the library was built with doesn't link, and the linker says
# why: when any of its translation units does, and also when the linker leaves out what nobody calls.
. "$(dirname "$0")/common.sh"

# The layout has a row for each field, which names it twice, and an entry for each type.
types=$source_dir/src/cadi/CADITypes.h
layout=$source_dir/src/scrivel/CADILayout.h
sed -nE '/^struct/h; /^    .*;/ { G; s/^.* (\w+)(\[[0-9]+\])?;.*\nstruct (\w+)$/\3 \1/p }' "$types" >fields.txt
sed -zE 's/,\n +/, /g' "$layout" | sed -nE '/using R = /h
  /layout\.Add\(offsetof/ { G; s/^.*\(R, (\w+)\), sizeof\(R::\1\)\);.*using R = (\w+);$/\2 \1/p }' >rows.txt
(($(wc -l <fields.txt) > 100)) || fail "Where are the fields?"
diff fields.txt rows.txt
diff <(sed -nE 's/^(struct|enum) (\w+).*/\2/p' "$types") \
  <(sed -zE 's/.* HashOf<([^>]*)>\(\);.*/\1/; s/,\s*/\n/g; s/$/\n/' "$layout")

compilers=("${CXX:-c++}")
if [[ $CXX != *clang* ]] && command -v clang++ >/dev/null; then
  compilers+=(clang++)
fi

mkdir same wide short
cp "$types" same
sed 's/uint32_t regNumber;/uint64_t regNumber;/' "$types" >wide/CADITypes.h
sed 's/char name\[1024\];/char name[128];/' "$types" >short/CADITypes.h
for generator in Run Connect; do
  echo "#include <ScrivelXmlGen.h>
    int main() { Scrivel2::Scrivel2XmlGen$generator log(\"log\"); }" >$generator.cpp
done
echo '#include <ScrivelXmlGen.h>
  void Write(Scrivel2::ScrivelXmlGenRunBase& log) { log.WriteBool("ident", true); }' >writes.cpp

flags=(-std=c++17 -Wall -Wextra -Werror -O2 -ffunction-sections -fdata-sections)
for compiler in "${compilers[@]}"; do
  for header in same wide short; do
    for program in Run Connect writes; do
      "$compiler" "${flags[@]}" -c $program.cpp -o $header.$program.o -I$header -I"$installed/include/ScrivelXmlGen"
    done
  done
  link() {
    "$compiler" -Wl,--gc-sections "$@" -L"$(echo "$installed"/lib*)" -lScrivelXmlGen -pthread -o program 2>error.txt
  }
  link same.Run.o same.writes.o
  link same.Connect.o
  for other in wide.Run wide.Connect short.Run short.Connect "same.Run wide.writes" "same.Run short.writes"; do
    read -ra objects <<<"$other"
    if link "${objects[@]/%/.o}"; then
      fail "$compiler: $other was linked"
    fi
    grep -q ScrivelXmlGen_was_built_with_another_CADITypes_h_than error.txt || fail "$(<error.txt)"
  done
done
cat error.txt
