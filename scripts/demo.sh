#!/usr/bin/env bash
# Main job: set up, build the library and the zebaudio tool, and run the
# bundled noisy speech sample through the processing chain with noise
# reduction, high-pass filter and gain control on. Writes the processed WAV
# and a before/after spectrogram into out/demo/.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
build="$root/build"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DZEBAUDIO_BUILD_TESTS=OFF -DZEBAUDIO_BUILD_BENCHMARKS=OFF \
  -DZEBAUDIO_BUILD_TOOLS=ON >/dev/null
cmake --build "$build" -j"$(nproc)" --target zebaudio_cli
out="$root/out/demo"
mkdir -p "$out"
"$build/tools/zebaudio" process "$root/samples/speech_noisy_16k.wav" "$out/speech_processed_16k.wav" \
  --nr 0 --hpf 120 --agc time --agc-gate -40 --spectrogram "$out/spectrogram.png"
echo
echo "Input:       $root/samples/speech_noisy_16k.wav"
echo "Output:      $out/speech_processed_16k.wav"
echo "Spectrogram: $out/spectrogram.png"
echo "Listen:      aplay $out/speech_processed_16k.wav"
