#!/usr/bin/env bash
# The Debian packages pass lintian, and a consumer is built against what they hold.
. "$(dirname "$0")/common.sh"

cmake -S "$source_dir" --preset package -B build
cmake --build build --parallel 2
(cd build && cpack -G DEB)
lintian --allow-root --fail-on error -- build/*.deb
for package in build/*.deb; do
  dpkg -x "$package" root
done

build "$tests/consumer" consumer -DCMAKE_FIND_ROOT_PATH="$work/root" -DCMAKE_PREFIX_PATH="$work/root/usr"
consumer/generators
consumer/layer
