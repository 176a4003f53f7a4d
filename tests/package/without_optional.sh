#!/usr/bin/env bash
# Where SQLite, zlib and zstd can't be found scrivel is built without them, says so, and answers in one line
# what it can't do.
. "$(dirname "$0")/common.sh"

cmake -S "$source_dir" -B build "${library_only[@]}" -DSCRIVEL_BUILD_LAYER=OFF -DSCRIVEL_BUILD_TOOL=ON \
  -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS=-O0 -DCMAKE_DISABLE_FIND_PACKAGE_SQLite3=ON \
  -DCMAKE_DISABLE_FIND_PACKAGE_ZLIB=ON -DZSTD_INCLUDE_DIR= -DZSTD_LIBRARY=
cmake --build build --parallel 2 --target scrivel
scrivel=$PWD/build/tool/scrivel

expect() {
  local text=$1 status=$2 answered=0 answer
  shift 2
  answer=$("$scrivel" "$@" 2>&1) || answered=$?
  [[ $answer == "$text" ]] || fail "scrivel $* said: $answer"
  [[ $answered == "$status" ]] || fail "scrivel $* ended with $answered"
}

cp "$source_dir/tests/tool/logs/run-4243.xml" run.xml
gzip -k run.xml
zstd -q run.xml
expect $'scrivel 2.0.0\nbuilt without gzip, zstd, SQLite' 0 --version
expect 'scrivel: this build has no SQLite' 2 query run.xml 'select count(*) from calls'
expect 'scrivel: this build has no SQLite' 2 export --to sqlite run.xml -o run.db
[[ ! -e run.db ]] || fail 'A database was begun'
expect "scrivel: run.xml.gz: this build doesn't read files compressed by gzip" 2 check run.xml.gz
expect "scrivel: run.xml.zst: this build doesn't read files compressed by zstd" 2 check run.xml.zst
expect 'run.xml: whole, 71 calls, 4 failed' 0 check run.xml
for library in sqlite3 zstd; do
  ! ldd "$scrivel" | grep "lib$library" || fail "It links $library"
done
