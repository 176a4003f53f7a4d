#!/usr/bin/env bash
# That a test which runs away is ended: by the limits that it runs within, and by a time that CTest has
# for each. $1 is the folder of the build.
set -euo pipefail

limited=$(dirname "${BASH_SOURCE[0]}")/limited
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

fail() {
  echo "$*" >&2
  exit 1
}

# Prints the status that a command ends with; its output goes to a file.
status_of() {
  local status=0
  timeout 60 "$limited" "$@" >"$scratch/output" || status=$?
  echo "$status"
}

[[ $(status_of sh -c 'echo out; echo error >&2; exit 7') == 7 ]] || fail "The status is another one."
[[ $(<"$scratch/output") == $'out\nerror' ]] || fail "The output is another one."

[[ $(status_of yes) == 141 ]] || fail "Output without end isn't ended."
[[ $(tail -n 1 "$scratch/output") == "Ended after 16777216 bytes of output." ]] || fail "It isn't told."
(($(stat -c %s "$scratch/output") < 17000000)) || fail "There is more output than the limit."

[[ $(status_of truncate -s 5G "$scratch/file") != 0 ]] || fail "A file grows without end."
[[ $(status_of sh -c 'ulimit -t') == 0 && $(<"$scratch/output") == 600 ]] || fail "Time is without end."

cd "$1"
tests=$(ctest -N | sed -n 's/^Total Tests: //p')
with_timeout=$(ctest --show-only=json-v1 | grep -c '"name" : "TIMEOUT"')
((tests > 0 && tests == with_timeout)) || fail "Of $tests tests only $with_timeout have a TIMEOUT."
