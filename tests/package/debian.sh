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

# What is in a log can be read where the headers are, and so can the pages that it leads to.
pages=root/usr/share/doc/libscrivelxmlgen-dev
[[ -f $pages/log-format.md ]] || fail "The package lacks log-format.md"
grep -oh '](\(\w\|[./-]\)*\.md' "$pages"/*.md | sed 's/](//' | sort -u | while read -r page; do
  [[ -f $pages/$page ]] || fail "The package lacks $page"
done

# The program finds its library, and each shell its completion.
export LD_LIBRARY_PATH=$(echo root/usr/lib/*/)
root/usr/bin/scrivel --version
for page in man/man1/scrivel.1.gz bash-completion/completions/scrivel zsh/vendor-completions/_scrivel \
  fish/vendor_completions.d/scrivel.fish; do
  [[ -s root/usr/share/$page ]] || fail "The package lacks $page"
done
dpkg-deb -f build/scrivel_*.deb Depends | grep -q 'libscrivelxmlgenreader2 (= ' || fail "scrivel doesn't name its library"

build "$tests/reading" reading -DCMAKE_FIND_ROOT_PATH="$work/root" -DCMAKE_PREFIX_PATH="$work/root/usr"
reading/reading

build "$tests/consumer" consumer -DCMAKE_FIND_ROOT_PATH="$work/root" -DCMAKE_PREFIX_PATH="$work/root/usr"
consumer/generators
consumer/layer
