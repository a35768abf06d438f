#!/usr/bin/env bash
# consumers.sh BUILD SOURCE SCRATCH CC CXX: installs BUILD into a prefix below SCRATCH, builds the consumers in SOURCE
# against nothing but that prefix, by CMake and by pkg-config, and runs them.
set -euo pipefail
build=$1
source=$2
scratch=$3
export CC=$4 CXX=$5

rm -rf "$scratch"
mkdir -p "$scratch"
prefix=$scratch/prefix
cmake --install "$build" --prefix "$prefix" >"$scratch/install.log"

cmake -G Ninja -S "$source" -B "$scratch/by-cmake" -DCMAKE_PREFIX_PATH="$prefix" >"$scratch/configure.log"
cmake --build "$scratch/by-cmake" >"$scratch/build.log"
"$scratch/by-cmake/consumer_c"
"$scratch/by-cmake/consumer_cpp"

libdir=$(dirname "$(find "$prefix" -name kvutil.pc)")/..
export PKG_CONFIG_PATH=$libdir/pkgconfig
# shellcheck disable=SC2046  # the flags are words of their own
"$CC" -std=c11 "$source/consumer.c" -o "$scratch/by_pkg_config" $(pkg-config --cflags --libs kvutil)
LD_LIBRARY_PATH=$libdir "$scratch/by_pkg_config"

readelf -d "$scratch/by_pkg_config" | grep -q 'NEEDED.*libkvutil\.so\.[0-9]*\]'
"$prefix/bin/kv" --version
