#!/usr/bin/env bash
# A class that replaces an operation which writes tags, or whose base does, can't say that it keeps them: it
# isn't compiled. One that replaces another operation is, without RTTI too.
set -euo pipefail
compiler=$1
sources=$2

compiles() {
  printf '#include <ScrivelXmlGen.h>\n%s\n' "$1" |
    "$compiler" -std=c++17 -fsyntax-only "${@:2}" -I"$sources" -I"$sources/cadi" -x c++ - 2>&1
}

claiming() {
  echo "struct $1 : $2 { $1() : $2(\"log\") { KeepsTags<$1>(); } $3 };"
}

generator=Scrivel2::Scrivel2XmlGenRun
honest=$(claiming Honest $generator 'void WriteNULLPointer(std::string) override {}')
compiles "$honest"
compiles "$honest" -fno-rtti

for operation in 'WriteIdent(std::string, bool, bool)' 'WriteIdentWithoutTabs(std::string)' 'WriteTabs(bool)'; do
  base="struct Base : $generator { using Scrivel2XmlGenRun::Scrivel2XmlGenRun; void $operation override {} };"
  for liar in "$(claiming Liar $generator "void $operation override {}")" "$base $(claiming Liar Base '')"; do
    if said=$(compiles "$liar"); then
      echo "compiled: $liar" >&2
      exit 1
    fi
    grep -F 'replaces an operation that writes tags' <<<"$said" >/dev/null || { echo "$said" >&2; exit 1; }
  done
done
