#!/usr/bin/env bash
# No name of a factory error can be read in the built library $1. Debugging information is left out of the
# search: it holds the names of the enumerators, as the header of the CADI types does.
set -euo pipefail

work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
strip --strip-debug -o "$work/library" "$1"
strings --all --bytes=4 "$work/library" >"$work/texts"

# What nobody hides is found, so the search sees the texts of the library.
if ! grep -q CADIFACT_SEVERITY_ERROR "$work/texts"; then
  echo "No text found in $1" >&2
  exit 1
fi
# Parts of names count too: a compiler may keep a text as numbers of eight bytes.
if grep -E 'FACT_ERR|MISSING|WRONG_|CONFLICT|LICENCE|EXPIRED|INSTANCE|RESOURCE|UNAVAIL' "$work/texts"; then
  echo "Names of factory errors can be read in $1" >&2
  exit 1
fi
