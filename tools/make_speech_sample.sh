#!/usr/bin/env bash
# Regenerates the bundled speech samples: a few seconds of synthetic speech at
# 16 kHz mono, clean and mixed with white noise at about 5 dB SNR, as WAV and
# as headerless 16-bit little-endian PCM.
# Needs Debian's espeak-ng and sox.
set -euo pipefail
out=${1:-"$(cd "$(dirname "$0")/.." && pwd)/samples"}
mkdir -p "$out"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

text="Please call the office before noon tomorrow, and bring the blue folder."
espeak-ng -v en-us -s 150 -a 120 -w "$tmp/voice.wav" "$text"
# 16 kHz, mono, 16-bit, peak at -3 dBFS.
# A second of silence before the speech lets a noise reducer learn the noise
# first, as it would on a live microphone.
sox "$tmp/voice.wav" -r 16000 -c 1 -b 16 "$out/speech_clean_16k.wav" norm -3 pad 1 0.5
len=$(soxi -D "$out/speech_clean_16k.wav")
# Deterministic white noise (fixed seed) scaled to 5 dB below the speech RMS.
rms_of() { sox "$1" -n stat 2>&1 | awk '/^RMS +amplitude/ {print $3}'; }
sox -R -n -r 16000 -c 1 -b 16 "$tmp/unit.wav" synth "$len" whitenoise vol 0.5
gain=$(awk -v s="$(rms_of "$out/speech_clean_16k.wav")" -v n="$(rms_of "$tmp/unit.wav")" \
  'BEGIN {printf "%.6f", s / 10^(5/20) / n}')
sox -R "$tmp/unit.wav" "$tmp/noise.wav" vol "$gain"
sox -m -v 1 "$out/speech_clean_16k.wav" -v 1 "$tmp/noise.wav" -b 16 "$out/speech_noisy_16k.wav"
sox "$out/speech_noisy_16k.wav" -t raw -e signed-integer -b 16 -L "$out/speech_noisy_16k.raw"
echo "wrote $out/speech_clean_16k.wav, speech_noisy_16k.wav and speech_noisy_16k.raw ($len s)"
