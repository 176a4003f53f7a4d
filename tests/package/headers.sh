#!/usr/bin/env bash
# A consumer's include path gets the headers that users include and one folder of what these are made of.
# Each header stands on its own.
. "$(dirname "$0")/common.sh"

export LC_ALL=C
# What the libraries are made of lies in one folder there, so none takes the place of another.
twice=$(cd "$source_dir" && printf '%s\n' {src,layer,reader}/scrivel/*.h | sed 's,.*/,,' | sort | uniq -d)
[[ -z $twice ]] || fail "Two libraries have a header $twice"

cd "$installed/include/ScrivelXmlGen"
[[ $(echo *) == "CADITypes.h CallLog.h LoggedCall.h ScrivelXmlGen.h scrivel" ]] ||
  fail "The include path has $(echo *)"
[[ $(echo ..//*) == ..//ScrivelXmlGen ]] || fail "Headers lie beside the folder: $(echo ..//*)"

find . -name '*.h' | while read -r header; do
  echo "#include <${header#./}>" | "${CXX:-c++}" -std=c++17 -Wall -Wextra -Werror -fsyntax-only -I. -x c++ -
done
