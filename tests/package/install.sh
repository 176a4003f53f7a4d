#!/usr/bin/env bash
# Installs the library, built with the options after $3, and moves it away from where it was installed to.
. "$(dirname "$0")/common.sh"

build "$source_dir" build "${library_only[@]}" "${@:4}"
rm -rf "$installed"
cmake --install build --prefix "$work/first"
mv first "$installed"
