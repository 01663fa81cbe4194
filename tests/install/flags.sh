#!/usr/bin/env bash
# Flags that change the binary interface are refused in words of Halyon's own; others pass.
#   flags.sh SOURCE COMPILER
set -euo pipefail
source=$1 compiler=$2

compile() { "$compiler" -std=c++20 -fsyntax-only -I"$source" "$@" "$source/examples/component/WordCounter.cpp" 2>&1; }

status=0
# What is packed to 4 bytes is as before where nothing is aligned to more.
packed=-fpack-struct=4
[ "$compiler" = "${compiler/i686/}" ] || packed=-fpack-struct=2
for flag in -fpack-struct $packed -fshort-enums -fshort-wchar -D_GLIBCXX_DEBUG -D_GLIBCXX_USE_CXX11_ABI=0 -std=c++17; do
  case $(compile $flag) in
    *Halyon:\ *) ;;
    *) echo "$flag is not refused with a reason"; status=1 ;;
  esac
done
for flag in -fno-rtti -fno-exceptions -funsigned-char -D_GLIBCXX_ASSERTIONS; do
  compile $flag || { echo "$flag is refused, though it changes no layout"; status=1; }
done
exit $status
