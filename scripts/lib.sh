# What the scripts share. Sourced with the working folder at the top of the tree.

say() { printf '\n== %s\n' "$1"; }

jobs() { nproc; }

# configure_and_build PRESET [TARGET...]: quiet when nothing is to do; what the tools say comes out when they fail.
configure_and_build() {
  local preset=$1; shift
  local folder=build/$preset targets=()
  [ $# -eq 0 ] || targets=(--target "$@")
  mkdir -p "$folder"
  if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  fi
  if [ ! -f "$folder/build.ninja" ]; then
    cmake --preset "$preset" >"$folder/configure.log" 2>&1 || {
      cat "$folder/configure.log" >&2
      echo "the configuration of preset $preset failed; CMake's words stand above" >&2
      return 1
    }
  fi
  cmake --build "$folder" --parallel "$(jobs)" "${targets[@]}" >"$folder/build.log" 2>&1 || {
    cat "$folder/build.log" >&2
    echo "the build of preset $preset failed; the compiler's words stand above" >&2
    return 1
  }
}
