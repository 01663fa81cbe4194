#!/usr/bin/env bash
# Installs a build, builds the examples against what was installed and moved, and compares what they print.
#   examples.sh BUILD EXAMPLES COMPILER LIBDIR
set -euo pipefail
build=$1 examples=$2 compiler=$3 libdir=$4

place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cmake --install "$build" --prefix "$place/first" >"$place/log"
mv "$place/first" "$place/prefix"

cmake -S "$examples" -B "$place/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_PREFIX_PATH="$place/prefix" >>"$place/log" || { cat "$place/log"; exit 1; }
cmake --build "$place/build" >>"$place/log" || { cat "$place/log"; exit 1; }

"$place/build/walk_rows" "$place/prefix/$libdir/halyon/HynSQ.so" >"$place/seen"
diff - "$place/seen" <<'END'
   73904  /home/ann/harbour.jpg
   48211  /home/ann/sea.jpg
END

"$place/build/workers" >"$place/seen"
printf '%s\n' 1 4 9 16 25 | diff - "$place/seen"

# Four by three pixels, two of them black.
printf 'P1 4 3  0 0 0 0  0 1 1 0  0 0 0 0\n' >"$place/picture"
"$place/build/outline" "$place/picture" >"$place/seen"
echo '1,1 to 3,2; 160 x 80' | diff - "$place/seen"
