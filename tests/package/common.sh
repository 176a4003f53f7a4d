# Sourced by the tests beside it. Each gets the source tree, a folder of its own that it may fill, and,
# where it needs one, the folder in which install.sh has installed the libraries.
# shellcheck shell=bash disable=SC2034
set -euo pipefail

source_dir=$1
work=$2
installed=${3:-}
tests=$source_dir/tests/package
library_only=(-DSCRIVEL_BUILD_TESTS=OFF -DSCRIVEL_BUILD_EXAMPLES=OFF)

rm -rf "$work"
mkdir -p "$work"
cd "$work"

# Configures the project in folder $1 and builds it in folder $2.
build() {
  local project=$1 folder=$2
  shift 2
  cmake -S "$project" -B "$folder" "$@"
  cmake --build "$folder" --parallel 2
}

fail() {
  echo "$*" >&2
  exit 1
}
