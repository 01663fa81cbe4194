#!/usr/bin/env bash
# Builds the examples against an installed SDK by CMake and by pkg-config, and compares what they print. The SDK is
# where CMake and pkg-config look for it; MODULE is its HynSQ.so.
#   use-sdk.sh EXAMPLES MODULE COMPILER
set -euo pipefail
examples=$1 module=$2 compiler=$3
export QT_QPA_PLATFORM=offscreen

place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT

quietly() { "$@" >"$place/log" 2>&1 || { cat "$place/log"; echo "failed: $*"; exit 1; }; }

# run FOLDER: the examples that were built there.
run() {
  "$1/walk_rows" "$module" | diff - <(echo '   73904  /home/ann/harbour.jpg'; echo '   48211  /home/ann/sea.jpg')
  "$1/client_rows" "$module" |
    diff - <(echo '   73904  *****  /home/ann/harbour.jpg'; echo '   48211         /home/ann/sea.jpg')
  "$1/workers" "$module" | diff - <(printf '%s\n' 1 4 9 16 25)
  "$1/shared_database" "$module" "$1/numbers.db" | diff - <(echo '20 numbers, 210 in all')
  # Four by three pixels, two of them black.
  printf 'P1 4 3  0 0 0 0  0 1 1 0  0 0 0 0\n' >"$place/picture"
  "$1/outline" "$place/picture" | diff - <(echo '1,1 to 3,2; 160 x 80')
  local component=$1/component/WordCounter.so
  "$1/component/count_words" "$component" 'sea  and harbour' $'\u3000月 光' | diff - <(echo '5 words')
  quietly hynvalidate --class 93F33EA1-AEA5-48C7-82C3-8F7AB37A2337:FE207190-6D74-4EF4-A7CA-2374B28CA945 "$component"
  nm -D --defined-only "$component" | sed 's/.* //' | sort | diff - <(printf '%s\n' MyDll{CanUnloadNow,GetClassObject})
}

configure() { cmake -S "$1" -B "$place/$2" -DCMAKE_CXX_COMPILER="$compiler" "${@:3}"; }
quietly configure "$examples" cmake
quietly cmake --build "$place/cmake"
run "$place/cmake"

# compile OUTPUT SOURCE PACKAGE...
compile() { quietly "$compiler" -std=c++20 "$examples/$2" $(pkg-config --cflags --libs "${@:3}") -o "$place/pc/$1"; }
mkdir -p "$place/pc/component"
compile walk_rows walk_rows.cpp halyon-core
compile client_rows client_rows.cpp halyon-client
compile workers workers.cpp halyon-thread
compile shared_database shared_database.cpp halyon-client halyon-thread
compile outline outline.cpp halyon-tools --static
compile component/count_words component/count_words.cpp halyon-core
compile component/WordCounter.so component/WordCounter.cpp halyon-module
run "$place/pc"
pkg-config --variable=moduledir halyon-core | xargs realpath | diff - <(dirname "$module")

# Whoever asks for Core alone needs nothing of the others; what is missing or unknown is named.
mkdir "$place/asking"
printf '%s\n' 'cmake_minimum_required(VERSION 3.22)' 'project(Asking CXX)' 'find_package(Halyon 1 ${WORDS})' \
  'message("found ${Halyon_FOUND} ${Halyon_Core_FOUND} ${Halyon_Thread_FOUND}")' >"$place/asking/CMakeLists.txt"
without=(-DCMAKE_DISABLE_FIND_PACKAGE_{Qt6,SQLite3,PkgConfig}=ON)
status=0
while IFS='|' read -r words expected; do
  configure "$place/asking" asked "-DWORDS=$words" "${without[@]}" >"$place/log" 2>&1 || true
  tr -s ' \n' ' ' <"$place/log" | grep -qF -- "$expected" ||
    { cat "$place/log"; echo "$words should give: $expected"; status=1; }
done <<'END_OF_TABLE'
REQUIRED;COMPONENTS;Core;Client|found 1 TRUE
REQUIRED;COMPONENTS;Core;OPTIONAL_COMPONENTS;Thread;Sound|found 1 TRUE
REQUIRED;COMPONENTS;Thread|component Thread needs Qt6 COMPONENTS Core
REQUIRED;COMPONENTS;Database|component Database needs SQLite3
COMPONENTS;Core;Sound|component Sound does not exist (there are Core Client Database Thread Tools)
REQUIRED|component Tools needs
END_OF_TABLE
exit $status
