#!/usr/bin/env bash
# A build for 32 bits, static and shared, writes the same log. Skipped where the compiler makes none.
. "$(dirname "$0")/common.sh"

echo '#include <string>
  int main(int count, char** words) { return std::string(words[0]).size() > 4000U + unsigned(count); }' >probe.cpp
if ! "${CXX:-c++}" -m32 probe.cpp -o probe || ! ./probe; then
  echo "Skipped: this system doesn't build for 32 bits (on Debian the package g++-multilib does)" >&2
  exit 77
fi

# Logs grow beyond 2 GiB there too.
cat >far.cpp <<'END'
#include <scrivel/LogStream.h>

int main()
{
    constexpr std::streamoff far = std::streamoff(3) << 30;
    Scrivel2::LogStream log;
    log.open("far.xml");
    log.seekp(far) << "end";
    log.close();
    return log.good() ? 0 : 1;
}
END

for shared in OFF ON; do
  build "$source_dir" build-$shared "${library_only[@]}" -DBUILD_SHARED_LIBS=$shared -DCMAKE_CXX_FLAGS=-m32
  cmake --install build-$shared --prefix "$work/installed-$shared"
  build "$tests/consumer" consumer-$shared -DCMAKE_PREFIX_PATH="$work/installed-$shared" -DCMAKE_CXX_FLAGS=-m32
  consumer-$shared/generators
  consumer-$shared/layer
done

"${CXX:-c++}" -m32 -std=c++17 -Iinstalled-OFF/include/ScrivelXmlGen far.cpp -Linstalled-OFF/lib -lScrivelXmlGen -pthread -o far
./far || fail "no log beyond 2 GiB"
[[ $(stat -c %s far.xml) == $(((3 << 30) + 3)) ]] || fail "a log beyond 2 GiB has $(stat -c %s far.xml) bytes"
rm far.xml
