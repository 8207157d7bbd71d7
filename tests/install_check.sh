#!/usr/bin/env bash
# Installs the library into a scratch prefix and builds a client against it
# three ways: the CMake package, pkg-config, and the static library. Also
# checks that the shared library exports the public API and nothing else.
set -euo pipefail
src=$1
build=$2
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
prefix="$tmp/prefix"
cmake --install "$build" --prefix "$prefix" >/dev/null

lib=$(find "$prefix" -name libzebaudio.so | head -n1)
stray=$(nm -D --defined-only "$lib" | awk '{print $3}' | grep -v -E '^(ZebKol_|ZebAnr_|ZebEq_|ZebAgc_|AGC_Process$)' || true)
if [ -n "$stray" ]; then
  echo "symbols exported beyond the public API:"; echo "$stray"; exit 1
fi
nm -D --defined-only "$lib" | grep -q ' ZebKol_Run$' || { echo "ZebKol_Run not exported"; exit 1; }

mkdir -p "$tmp/consumer"
cp "$src/examples/kol_frame_loop.c" "$tmp/consumer/"
cat > "$tmp/consumer/CMakeLists.txt" <<'CM'
cmake_minimum_required(VERSION 3.16)
project(consumer C)
find_package(zebaudio REQUIRED)
add_executable(consumer kol_frame_loop.c)
target_link_libraries(consumer PRIVATE zebaudio::zebaudio)
CM
cmake -S "$tmp/consumer" -B "$tmp/consumer/build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$tmp/consumer/build" >/dev/null

pcdir=$(dirname "$(find "$prefix" -name zebaudio.pc | head -n1)")
export PKG_CONFIG_PATH="$pcdir"
cc -std=c99 -Wall -Wextra -o "$tmp/pc_client" "$src/examples/kol_frame_loop.c" $(pkg-config --cflags --libs zebaudio)
cc -std=c99 -o "$tmp/static_client" "$src/examples/kol_frame_loop.c" $(pkg-config --cflags zebaudio) \
  "$(dirname "$lib")/libzebaudio.a" $(pkg-config --libs libcjson) -lstdc++ -lm

# The installed client runs a short frame loop.
head -c 8192 /dev/urandom > "$tmp/in.raw"
LD_LIBRARY_PATH="$(dirname "$lib")" "$tmp/pc_client" "$tmp/in.raw" "$tmp/out.raw" 16000 1 >/dev/null
"$tmp/static_client" "$tmp/in.raw" "$tmp/out2.raw" 16000 2 >/dev/null
cmp -s "$tmp/in.raw" "$tmp/out.raw" && { echo "output identical to input: no delay?"; exit 1; }
echo "install check passed"
