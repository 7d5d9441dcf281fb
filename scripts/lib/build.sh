# shellcheck shell=bash
# Configuring and building, told from the root of the checkout. Sourced.

# silently COMMAND...: its output counts only when it fails.
silently() {
  local output
  output=$("$@" 2>&1) && return
  printf '%s\n' "$output" >&2
  return 1
}

# configure FOLDER PRESET [CMAKE ARGUMENT]...: only where it is needed. Ninja
# runs CMake again by itself when a CMakeLists.txt changes, but doesn't know
# that the folder came from a preset, nor that the checkout has moved.
configure() {
  local folder=$1 preset=$2
  shift 2
  [[ $folder/build.ninja -nt CMakePresets.json ]] &&
    grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$folder/CMakeCache.txt" &&
    return
  silently cmake --fresh --preset "$preset" -B "$folder" "$@"
}

# build FOLDER [TARGET]...
build() {
  silently ninja -C "$@"
}
