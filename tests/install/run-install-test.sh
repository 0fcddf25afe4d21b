#!/usr/bin/env bash
# Installs a built krlayout into a temporary prefix, then builds and runs the consumer program
# against that prefix twice: through the CMake package and through pkg-config. When the build has
# the Python module, the installed package is imported from the prefix and lays out an example.
#
# usage: run-install-test.sh BUILD_DIR CONSUMER_SOURCE_DIR [CXX_FLAGS] [CXX_COMPILER]
#   BUILD_DIR            a configured and built krlayout build tree
#   CONSUMER_SOURCE_DIR  this directory (tests/install), or the project root
#   CXX_FLAGS            compiler flags for the consumer (the sanitizer flags of a sanitized build)
#   CXX_COMPILER         the C++ compiler (default: $CXX, else c++)
set -euo pipefail

if (($# < 2)); then
  echo "usage: $0 BUILD_DIR CONSUMER_SOURCE_DIR [CXX_FLAGS] [CXX_COMPILER]" >&2
  exit 2
fi

build_dir="$(cd "$1" && pwd)"
src_dir="$(cd "$2" && pwd)"
if [[ ! -f "$src_dir/consumer.cpp" && -f "$src_dir/tests/install/consumer.cpp" ]]; then
  src_dir="$src_dir/tests/install"
fi
cxx_flags="${3-}"
cxx="${4:-${CXX:-c++}}"

work="$(mktemp -d "${TMPDIR:-/tmp}/krlayout-install.XXXXXX")"
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"

echo "-- installing $build_dir into $prefix"
cmake --install "$build_dir" --prefix "$prefix" >"$work/install.log" || {
  cat "$work/install.log"
  exit 1
}

echo "-- consumer through find_package(krlayout CONFIG)"
cmake -S "$src_dir" -B "$work/consumer-build" \
  -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_CXX_FLAGS="$cxx_flags" \
  -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF \
  -DCMAKE_FIND_PACKAGE_NO_SYSTEM_PACKAGE_REGISTRY=ON
cmake --build "$work/consumer-build"
"$work/consumer-build/consumer"

echo "-- consumer through pkg-config"
pc_file="$(find "$prefix" -name krlayout.pc -print -quit)"
if [[ -z "$pc_file" ]]; then
  echo "krlayout.pc was not installed under $prefix" >&2
  exit 1
fi
export PKG_CONFIG_PATH="$(dirname "$pc_file")"
pkg-config --exists --print-errors krlayout
read -r -a pc_cflags <<<"$(pkg-config --cflags krlayout)"
read -r -a pc_libs <<<"$(pkg-config --libs krlayout)"
libdir="$(pkg-config --variable=libdir krlayout)"
read -r -a flags <<<"$cxx_flags"
"$cxx" "${flags[@]}" "${pc_cflags[@]}" "$src_dir/consumer.cpp" -o "$work/consumer-pc" "${pc_libs[@]}"
LD_LIBRARY_PATH="$libdir${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" "$work/consumer-pc"

cache_value() {
  sed -n "s/^$1:[A-Z]*=//p" "$build_dir/CMakeCache.txt" | head -n 1
}
if [[ "$(cache_value KRLAYOUT_BUILD_PYTHON)" == ON ]]; then
  echo "-- Python package from the prefix"
  python="$(cache_value Python3_EXECUTABLE)"
  site="$prefix/lib/python3/dist-packages"
  for file in __init__.py __init__.pyi py.typed; do
    if [[ ! -f "$site/krlayout/$file" ]]; then
      echo "krlayout/$file was not installed under $site" >&2
      exit 1
    fi
  done
  py_env=(PYTHONPATH="$site" PYTHONDONTWRITEBYTECODE=1)
  if [[ "$(cache_value KRLAYOUT_SANITIZE)" == ON ]]; then
    # A sanitized module needs the AddressSanitizer runtime loaded first, and the C++ runtime
    # with it (the sanitizer forwards C++ exceptions to it); the interpreter's own objects, kept
    # to the end on purpose, are no leaks to report.
    preload="$("$cxx" -print-file-name=libasan.so) $("$cxx" -print-file-name=libstdc++.so)"
    py_env+=(LD_PRELOAD="$preload" ASAN_OPTIONS=detect_leaks=0)
  fi
  # Without LD_LIBRARY_PATH: the module must find the library through its own RPATH.
  env -u LD_LIBRARY_PATH "${py_env[@]}" "$python" - "$prefix" \
    "$prefix/share/krlayout/examples/engine-bay.json" <<'PY'
import os
import sys

import krlayout

prefix = os.path.realpath(sys.argv[1])
inside = lambda path: os.path.realpath(path).startswith(prefix + os.sep)
assert inside(krlayout.__file__), "krlayout imported from %s" % krlayout.__file__
with open("/proc/self/maps") as maps:
    libraries = {line.split()[-1] for line in maps if "libkrlayout.so" in line}
assert libraries and all(inside(path) for path in libraries), libraries
result = krlayout.layout(krlayout.load(sys.argv[2]), type="formboard")
assert result.ok and result.points.shape == (len(result.segments), 6), result
print("laid out %s: %d segments, %d lines, with %s" % (
    os.path.basename(result.source), len(result.segments), len(result.points),
    sorted(libraries)[0][len(prefix):]))
PY
fi

echo "-- install test passed"
