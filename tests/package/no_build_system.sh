#!/usr/bin/env bash
# The sources are taken into a tree and compiled in one line, without a flag that says anything about them.
. "$(dirname "$0")/common.sh"

mkdir tree
cp -r "$source_dir/src" "$source_dir/layer" tree
cd tree
cp "$tests/consumer/generators.cpp" app.cpp
"${CXX:-c++}" -std=c++17 -Isrc app.cpp src/*/*.cpp
./a.out

cp "$tests/consumer/layer.cpp" app.cpp
"${CXX:-c++}" -std=c++17 -Isrc -Ilayer app.cpp src/*/*.cpp layer/*.cpp
./a.out
log=$(echo logs/guarded-*.xml)
sed -nE -e 's/[0-9]+\.[0-9]{6} s/SECONDS/; s/threadId="[0-9]+"/threadId="THREAD"/' \
  -e '/<CADIExecStop/,/<\/CADIExecStop/p' "$log" | diff - <(cat <<'END'
    <CADIExecStop call_num="1"
     call_time="SECONDS"
     threadId="THREAD" disassembler_address="0x0000000000008000">
        <now>true</now>
        <return_time>SECONDS</return_time>
        <return>CADI_STATUS_OK</return>
    </CADIExecStop>
END
)
[[ $(tail -n 1 "$log") == "</$(basename "$log" .xml)>" ]] || fail "The log is not a whole document"

# A CADITypes.h of the program's own is taken in place of the project's.
mkdir own
sed 's/uint32_t regNumber;/uint64_t regNumber;/' src/cadi/CADITypes.h >own/CADITypes.h
echo '#include <LoggedCall.h>
  static_assert(sizeof(eslapi::CADIReg_t::regNumber) == 8);' >app.cpp
"${CXX:-c++}" -std=c++17 -Iown -Isrc -Ilayer -fsyntax-only app.cpp
