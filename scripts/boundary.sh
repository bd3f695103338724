#!/usr/bin/env bash
# scripts/boundary.sh LIBRARY: checks the shipped library itself. It exports the natives of tests/exports.txt and no
# more, leaves nothing undefined but host operations and the system's libraries, has AVX2 instructions in functions
# named so only and no fused multiply-add anywhere, is hardened, and runs one static initialiser.
# shellcheck source=scripts/lib.sh
source "$(dirname "$0")/lib.sh"

library=$1
problems=0
complain() { printf '%s\n' "$*" >&2; problems=$((problems + 1)); }

# expect_grep PATTERN TEXT COMPLAINT: the text has a line like this.
expect_grep() { grep -Eq "$1" <<<"$2" || complain "$3"; }

check_exports() {
  local shared='^_ZG?V?ZNK15RuntimeTypeName3get' names difference  # the empty string of the process, and its guard
  names=$(nm -D --defined-only "$library" | awk '{ print $NF }')
  difference=$(diff <(awk '{ print $1 }' tests/exports.txt | sort) <(grep -Ev "$shared" <<<"$names" | sort) | grep '^[<>]' || true)
  [[ -z $difference ]] || complain "exports ('<' is missing, '>' is too much):"$'\n'"$difference"
  [[ $(grep -Ec "$shared" <<<"$names") == 2 ]] || complain "the shared empty string and its guard are not exported"
}

# Symbols of the system's libraries carry a version; whatever has none must be a host operation.
check_imports() {
  local operations name undefined
  operations=$(grep -oE '\w+\(' src/runtime/hostOperations.h | tr -d '(' | sort -u)
  undefined=$(nm -D --undefined-only "$library" | awk '{ print $NF }')
  for name in $(grep -v @ <<<"$undefined" | grep -Ev '^(__gmon_start__|_ITM_.*)$' | c++filt | sed 's/[[(].*//'); do
    grep -qx "$name" <<<"$operations" || complain "undefined and no host operation: $name"
  done
  ! grep @ <<<"$undefined" | grep -Ev '@(GLIBC|GLIBCXX|CXXABI|GCC)_' || complain "undefined from another library"
  ! readelf -dW "$library" | grep NEEDED | grep -Ev '\[(libstdc\+\+|libm|libc|libgcc_s|ld-linux-x86-64)\.so\.[0-9]\]' ||
    complain "needs another library"
}

# AVX2 code outside functions of that name would stop older processors; compiler-made clones keep the name. The function
# that asks the processor runs on all of them.
check_instructions() {
  objdump -d -C --no-show-raw-insn "$library" | awk '
    /^[0-9a-f]+ <.*>:$/ { sub(/^[0-9a-f]+ /, ""); name = $0; avx2 = name ~ /Avx2/ && name !~ /CanUseAvx2/; next }
    !/^ +[0-9a-f]+:/ { next }
    { vex = $2 ~ /^v/ || /%[yz]mm/ || $2 ~ /^(andn|bextr|bls(i|r|msk)|bzhi|mulx|pdep|pext|rorx|sarx|shlx|shrx)$/ }
    vex && !avx2 { print "AVX in " name " " $0; bad = 1 }
    $2 ~ /^vf(n?madd|n?msub|maddsub|msubadd)/ { print "fused multiply-add in " name " " $0; bad = 1 }
    vex && avx2 { found = 1 }
    END { if (!found) print "no AVX2 code at all"; exit bad || !found }' >&2 || complain "instructions"
}

check_hardening() {
  local dynamic headers undefined built
  dynamic=$(readelf -dW "$library")
  headers=$(readelf -lW "$library")
  undefined=$(nm -D --undefined-only "$library")
  expect_grep 'FLAGS_1.*NOW' "$dynamic" "symbols are not bound at load"
  expect_grep 'FLAGS_1.*NODELETE' "$dynamic" "the library can be unloaded"
  expect_grep 'GNU_RELRO' "$headers" "relocations stay writable"
  expect_grep 'GNU_STACK.* RW ' "$headers" "the stack is executable"
  expect_grep ' __stack_chk_fail@' "$undefined" "no stack protector"
  # Checked library functions show in the file only where a size is known to the compiler; so ask how it was built.
  built=$(grep '"command".*vesk_math\.dir' "${library%/lib/*}/compile_commands.json" || true)
  if [[ -z $built ]] || grep -qv -- -D_FORTIFY_SOURCE=2 <<<"$built"; then
    complain "built without checked library functions"
  fi
  ! grep -E 'TEXTREL|RPATH|RUNPATH' <<<"$dynamic" || complain "text relocations or a search path"
}

# Besides the compiler's own two (frame_dummy and the table of processor features) there is one, the shared cache's.
check_static_initialisers() {
  local bytes ours
  bytes=$(readelf -SW "$library" | sed -n 's/.* \.init_array *INIT_ARRAY *[0-9a-f]* [0-9a-f]* \([0-9a-f]*\) .*/\1/p')
  ours=$(nm "$library" | grep -c ' _GLOBAL__sub_I_' || true)
  [[ $((16#$bytes / 8)) == 3 && $ours == 1 ]] || complain "$((16#$bytes / 8)) static initialisers, $ours of them ours"
}

check_exports
check_imports
check_instructions
check_hardening
check_static_initialisers
((problems == 0)) || fail "$problems problems at the boundary of $library"
echo "$(wc -l <tests/exports.txt) natives exported; imports, instructions, hardening and start-up are as they should be"
