#!/usr/bin/env bash
# Builds the module and the host four times, with both compilers and without and with full optimisation, and compares
# what the digest program prints over each: everything must be the same. Then runs it on a processor without and with
# AVX2, neither with fused multiply-adds (the mathematics library takes other forms of its functions where those exist):
# the lines may differ only where the order of a sum or the form of a scaling depends on the processor, and there they
# must.
# shellcheck source=scripts/lib.sh
source "$(dirname "$0")/lib.sh"

expected_differences='degrees multiplyNdArrays radians sumNdArray sumNdArrayAsDouble sumNdArrayAsFloat'
work=build/digest

# over BUILD COMMAND...: runs the digest program, which finds the host and beside it the module in that build.
over() { LD_LIBRARY_PATH=$work/$1/lib "${@:2}" build/release/bin/digest; }

# digest_of COMPILER LEVEL: builds, and leaves the output in $work/COMPILER-LEVEL.txt.
digest_of() {
  local dir=$work/$1$2
  cmake -S . -B "$dir" -G Ninja -DVESK_TESTS=OFF -DCMAKE_CXX_COMPILER="$1" -DCMAKE_BUILD_TYPE=Plain \
    -DCMAKE_CXX_FLAGS="$2" >/dev/null
  cmake --build "$dir" -j "$jobs" -t vesk_math vesk_host >"$dir.log" || { tail -n 40 "$dir.log"; return 1; }
  over "$1$2" env >"$dir.txt"
}

build release digest
for compiler in g++ clang++-14; do
  for level in -O0 -O3; do
    note "$compiler $level"
    digest_of "$compiler" "$level"
    diff "$work/g++-O0.txt" "$work/$compiler$level.txt"
  done
done

for model in Nehalem Haswell,-fma; do
  over g++-O3 qemu-x86_64 -cpu "$model" 2>"$work/$model.log" >"$work/$model.txt" || { cat "$work/$model.log"; exit 1; }  # warns much
done
differences=$({ diff "$work/Nehalem.txt" "$work/Haswell,-fma.txt" || true; } | sed -n 's/^< \([^ ]*\) .*/\1/p' | sort | xargs)
[[ $differences == "$expected_differences" ]] ||
  fail "without and with AVX2 these differ: '$differences', expected: '$expected_differences'"
echo "$(wc -l <"$work/g++-O0.txt") digests agree; by processor these differ: $differences"
