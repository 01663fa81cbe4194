#!/usr/bin/env bash
# Installs a build, moves it, and uses the SDK from there.
#   examples.sh BUILD EXAMPLES COMPILER LIBDIR
set -euo pipefail
build=$1 examples=$2 compiler=$3 libdir=$4

place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cmake --install "$build" --prefix "$place/first" >"$place/log" || { cat "$place/log"; exit 1; }
mv "$place/first" "$place/prefix"

export CMAKE_PREFIX_PATH=$place/prefix PKG_CONFIG_PATH=$place/prefix/$libdir/pkgconfig CMAKE_GENERATOR=Ninja
export PATH=$place/prefix/bin:$PATH
"$(dirname "$0")/use-sdk.sh" "$examples" "$place/prefix/$libdir/halyon/HynSQ.so" "$compiler"
