#!/usr/bin/env bash
# Sets up, builds and runs every test, then runs the suite once more in an
# AddressSanitizer + UndefinedBehaviorSanitizer build. Exits non-zero on any
# failure.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
jobs=$(nproc)

run_suite() {
  local build=$1
  shift
  cmake -S "$root" -B "$build" "$@" >/dev/null
  cmake --build "$build" -j"$jobs"
  ctest --test-dir "$build" --output-on-failure -j"$jobs"
}

echo "== Release build and tests"
run_suite "$root/build" -DCMAKE_BUILD_TYPE=Release -DZEBAUDIO_BUILD_TESTS=ON -DZEBAUDIO_BUILD_TOOLS=ON -DZEBAUDIO_BUILD_BENCHMARKS=ON
echo "== AddressSanitizer + UndefinedBehaviorSanitizer build and tests"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  run_suite "$root/build-asan" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZEBAUDIO_SANITIZE=ON -DZEBAUDIO_BUILD_TESTS=ON -DZEBAUDIO_BUILD_TOOLS=ON -DZEBAUDIO_BUILD_BENCHMARKS=OFF
echo "== All tests passed"
