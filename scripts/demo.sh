#!/usr/bin/env bash
# Main job: set up, build the library and the example client, and run the
# bundled noisy speech sample through the processing chain.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
build="$root/build"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DZEBAUDIO_BUILD_TESTS=OFF -DZEBAUDIO_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" --target kol_frame_loop
out="$root/out/demo"
mkdir -p "$out"
"$build/examples/kol_frame_loop" "$root/samples/speech_noisy_16k.raw" "$out/speech_processed_16k.raw" 16000 1
echo "Input:  $root/samples/speech_noisy_16k.raw (16 kHz mono, 16-bit little-endian PCM)"
echo "Output: $out/speech_processed_16k.raw"
