#!/usr/bin/env bash
# The lines of README.md for whoever installs the library, tried as they stand there: the one for
# pkg-config with what ../package/install.sh has installed, those for declarations of one's own with a copy
# of ours in /opt's place.
. "$(dirname "$0")/../package/common.sh"

# What stands in /opt's place: a way to this test's folder without blanks or quotes, which the lines don't
# expect.
opt=$(mktemp -d)
trap 'rm -r "$opt"' EXIT
ln -s "$work" "$opt/here"

# The block of README.md below the comment that names it.
shown() {
  awk -v mark="<!-- installed: $1 -->" '
    /^```$/ { inside = 0 }
    inside
    $0 == mark { found = 1; next }
    /^```/ { inside = found; found = 0 }' "$source_dir/README.md" | sed "s,/opt/,$opt/here/,g"
}

# What the lines make stays in a tree of this test's own, and "g++" is the compiler of this build.
mkdir tree tools
ln -s "$source_dir"/* tree
ln -s "$(command -v "${CXX:-c++}")" tools/g++
PATH=$work/tools:$PATH
PKG_CONFIG_PATH=$(echo "$installed"/lib*/pkgconfig)
export PKG_CONFIG_PATH LD_LIBRARY_PATH=${PKG_CONFIG_PATH%/pkgconfig}
cd tree

eval "$(shown pkg-config)"
./guard
grep -q '<bytes>00000000 00000000 00000000 00008000 </bytes>' run-*.xml || fail "The program wrote no log"

mkdir -p ../model/include
sed 's/^    std::uint32_t regNumber;/    std::uint64_t regNumber;/' src/cadi/CADITypes.h >../model/include/CADITypes.h
eval "$(shown own-declarations)"
[[ -f $(echo ../scrivel/lib*/libScrivelXmlGen.a) ]] || fail "Nothing was installed"
[[ ! -e ../scrivel/include/ScrivelXmlGen/CADITypes.h ]] || fail "Declarations were installed"
