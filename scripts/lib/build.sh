# shellcheck shell=bash
# Configuring and building, told from the root of the checkout. Sourced.

# A build folder is the same whoever asks for it first, so what the caller has
# set for other purposes doesn't reach it.
unset CFLAGS CXXFLAGS CPPFLAGS LDFLAGS
export CC=gcc CXX=g++

# silently COMMAND...: its output counts only when it fails.
silently() {
  local output
  output=$("$@" 2>&1) && return
  printf '%s\n' "$output" >&2
  return 1
}

# announced WORDS COMMAND...: says the words when the command takes longer than
# a second, for somebody may be talking into a microphone behind the pipe.
announced() {
  local words=$1 ended status='' waited=0
  shift
  exec {ended}< <("$@" >&2 && echo 0)
  read -r -t 1 -u "$ended" status || waited=$?
  if ((waited > 128)); then # a time-out, and not the end of a failed command
    echo "$words" >&2
    read -r -u "$ended" status || true
  fi
  exec {ended}<&-
  return "${status:-1}"
}

# configure FOLDER PRESET [-DNAME=VALUE]...: only where it is needed. Ninja runs
# CMake again by itself when a CMakeLists.txt changes, but doesn't know that the
# folder came from a preset, nor that the checkout has moved. What another
# command has turned on in the folder stays on.
configure() {
  local folder=$1 preset=$2 anew=(--fresh) kept=()
  shift 2
  if is_current "$folder"; then
    has "$folder" "$@" && return
    anew=()
  fi
  mapfile -t kept < <(turned_on "$folder")
  silently cmake "${anew[@]}" --preset "$preset" -B "$folder" "${kept[@]}" "$@"
}

# is_current FOLDER: for this checkout where it is now, its presets and $CXX.
is_current() {
  [[ $1/build.ninja -nt CMakePresets.json &&
    $(cached "$1" CMAKE_HOME_DIRECTORY) == "$PWD" &&
    $(basename "$(cached "$1" CMAKE_CXX_COMPILER)") == "$CXX" ]]
}

# has FOLDER [-DNAME=VALUE]...
has() {
  local folder=$1 definition
  shift
  for definition; do
    definition=${definition#-D}
    [[ $(cached "$folder" "${definition%%=*}") == "${definition#*=}" ]] || return
  done
}

# turned_on FOLDER: prints what it builds beyond the plugin and the program.
turned_on() {
  local option
  for option in CORVANE_BUILD_TESTS CORVANE_BUILD_BENCHES; do
    [[ $(cached "$1" $option) != ON ]] || echo "-D$option=ON"
  done
}

# cached FOLDER NAME: prints its value, or nothing.
cached() {
  sed -n "s/^$2:[A-Z]*=//p" "$1/CMakeCache.txt" 2>/dev/null || true
}

# build FOLDER [TARGET]...
build() {
  silently ninja -C "$@"
}
