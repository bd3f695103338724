#!/usr/bin/env bash
# summarize.sh PROGRAM: what the example prints for the carried data, and how it refuses bad input: one line on standard
# error that names the place, nothing on standard output, an exit status that is not 0.
set -euo pipefail
cd "$(dirname "$0")/../.."
program=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
complain() { printf '%s\n' "$*"; failures=$((failures + 1)); }

# refuses EXPECTED-MESSAGE ARGUMENT...: the message is for standard error, with the directory of the inputs left out.
refuses() {
  local expected=$1 status=0
  shift
  "$program" "$@" >"$work/out" 2>"$work/err" || status=$?
  [[ $status == 1 && ! -s $work/out && $(sed "s|$work/||" "$work/err") == "$expected" ]] ||
    complain "wanted status 1 and '$expected', got $status and '$(cat "$work/err" "$work/out")'"
}
# refuses_text EXPECTED-MESSAGE TEXT: the same for a file with this text.
refuses_text() {
  # shellcheck disable=SC2059  # the text brings its own line ends
  printf "$2" >"$work/in.csv"
  refuses "$1" "$work/in.csv"
}

"$program" examples/data/longley.csv | diff tests/examples/longley.expected - || complain "another report"
"$program" - <examples/data/longley.csv | cmp tests/examples/longley.expected - || complain "another report from standard input"
"$program" --certified examples/data/longley.certified.csv examples/data/longley.csv >"$work/out" || complain "$(cat "$work/out")"
sed 's/15\.0618722713733/15.0618722723733/' examples/data/longley.certified.csv >"$work/wrong.csv"
! "$program" --certified "$work/wrong.csv" examples/data/longley.csv >"$work/out" || complain "a wrong certified value passes"
printf '\xef\xbb\xbf"a ""b""", "c,d"\r\n+1, .5\r\n\r\n# no row\n-2e0,1e3\t\n' | "$program" | grep -q '^c,d  *2  *1000.5 ' || complain "quotes, blanks, line ends"
printf '1,2,4\n2,4,5\n3,6,7\n4,8,1\n5,10,2\n' | "$program" | grep -q '^No fit: ' || complain "a fit of dependent columns"

refuses 'none.csv: No such file or directory' "$work/none.csv"
refuses '.: cannot be read' .
refuses_text 'in.csv:1:1: the table ends without any numbers' ''
refuses_text 'in.csv:2:1: the table ends without any numbers' 'a,b\n'
refuses_text 'in.csv:3:3: the row has 2 cells, the first one has 1' '1\n2\n3,4\n'
refuses_text 'in.csv:2:1: the row has 1 cells, the first one has 2' '1,2\n3\n'
for bad in x inf nan 0x10 1e999 1.5.2 '' - +-1 '1 2'; do
  refuses_text "in.csv:3:4: not a finite decimal number: '$bad'" "a,b\n1,2\n12,$bad\n"
done
refuses_text 'in.csv:1:3: the quoted cell does not end' '1,"2\n'
refuses_text 'in.csv:2:4: a comma must follow the quoted cell' '1,2\n"3"4,5\n'
refuses 'ValueException: log expects a value > 0' --log <(printf '1\n0\n')
refuses '<stdin>:1:1: the table ends without any numbers' </dev/null
((failures == 0))
