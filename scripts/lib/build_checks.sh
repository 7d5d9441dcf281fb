# shellcheck shell=bash
# The test command's checks of the build folders and of the house. Sourced; told
# from the root of the checkout.

# Every include runs down; and a copy of the house in which one climbs, one
# leads aside and one leads nowhere is complained of.
includes_run_down() {
  local copy=build/crooked_house said
  python3 -B scripts/lib/house.py
  rm -rf "$copy" && mkdir -p "$copy"
  cp -r src host include "$copy"
  echo '#include "commands/command_line.h"' >>"$copy/host/audio/file_kind.cc"
  echo '#include "report/reply.h"' >>"$copy/src/adts/frame.h"
  echo '#include "console.h"' >>"$copy/host/terminal/console.cc"
  if said=$(python3 -B scripts/lib/house.py "$copy"); then return 1; fi
  echo "$said"
  [[ $said == *"src/adts/frame.h: report/reply.h: climbs"* ]]
  [[ $said == *"host/audio/file_kind.cc: commands/command_line.h: climbs"* ]]
  [[ $said == *"host/terminal/console.cc: console.h: leads nowhere"* ]]
}

# In whatever order a folder is asked for, it ends as the same one; and who asks
# for what it is already gets it as it stands.
configurations_hold() {
  local project=build/orders
  rm -rf "$project"
  lay_out_small_project "$project"
  cd "$project" || return
  plain_never_turns_off
  stale_folders_are_made_anew
  callers_settings_stay_outside
  compiling_is_announced
}

# lay_out_small_project FOLDER: presets and options as ours, and no source.
lay_out_small_project() {
  mkdir -p "$1"
  cat >"$1/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(orders LANGUAGES CXX)
option(CORVANE_BUILD_TESTS "Tests" OFF)
option(CORVANE_BUILD_BENCHES "Benches" OFF)
END
  cat >"$1/CMakePresets.json" <<'END'
{"version": 6, "configurePresets":
 [{"name": "release", "generator": "Ninja", "binaryDir": "${sourceDir}/b"}]}
END
}

# turned FOLDER: prints whether tests, then benches are on.
turned() {
  echo "$(cached "$1" CORVANE_BUILD_TESTS) $(cached "$1" CORVANE_BUILD_BENCHES)"
}

# configured_again FOLDER COMMAND...: whether the command made its build anew.
configured_again() {
  local folder=$1 before
  shift
  before=$(stat -c %y "$folder/build.ninja")
  "$@"
  [[ $(stat -c %y "$folder/build.ninja") != "$before" ]]
}

plain_never_turns_off() {
  configure first release
  [[ $(turned first) == "OFF OFF" ]]
  configured_again first configure first release -DCORVANE_BUILD_TESTS=ON
  [[ $(turned first) == "ON OFF" ]]
  configured_again first configure first release -DCORVANE_BUILD_BENCHES=ON
  [[ $(turned first) == "ON ON" ]]
  if configured_again first configure first release; then return 1; fi
  if configured_again first configure first release \
    -DCORVANE_BUILD_TESTS=ON; then return 1; fi
  [[ $(turned first) == "ON ON" ]]
}

stale_folders_are_made_anew() {
  touch CMakePresets.json
  configured_again first configure first release
  CC=clang CXX=clang++ configured_again first configure first release
  [[ $(cached first CMAKE_CXX_COMPILER) == */clang++ ]]
  configured_again first configure first release
  [[ $(cached first CMAKE_CXX_COMPILER) == */g++ ]]
  cp -r first moved
  sed -i 's|^CMAKE_HOME_DIRECTORY.*|&/elsewhere|' moved/CMakeCache.txt
  touch moved/build.ninja
  configured_again moved configure moved release
  [[ $(turned first) == "ON ON" && $(turned moved) == "ON ON" ]]
}

callers_settings_stay_outside() {
  CXX=clang++ CXXFLAGS=-DTHEIRS LDFLAGS=-Wl,-theirs bash -c \
    'source ../../scripts/lib/build.sh; configure theirs release'
  [[ $(cached theirs CMAKE_CXX_COMPILER) == */g++ ]]
  [[ $(cached theirs CMAKE_CXX_FLAGS) != *THEIRS* ]]
  [[ $(cached theirs CMAKE_EXE_LINKER_FLAGS) != *theirs* ]]
}

# A command that waits until the words were read takes longer than a second; one
# that is done at once is not worth a word, and each keeps its status.
compiling_is_announced() {
  local words
  mkfifo go
  # shellcheck disable=SC2317 # announced calls it
  until_told() { read -r <go; }
  { announced "Building..." until_told 2>&1 && echo status 0; } | {
    read -r words && [[ $words == "Building..." ]]
    echo >go
    read -r words && [[ $words == "status 0" ]]
  }
  [[ -z $(announced "Building..." true 2>&1) ]]
  if announced "Building..." false; then return 1; fi
}

# A build without a test proves nothing, and says so.
missing_tests_are_a_failure() {
  local said passed=0 failed=0 logs=$PWD/build/test_logs/no_tests
  mkdir -p "$logs" build/no_tests
  rm -f build/no_tests/CTestTestfile.cmake
  said=$(run_tests no_tests && echo "$passed passed, $failed failed")
  echo "$said"
  [[ $said == *"build/no_tests registers no test program."* ]]
  [[ $said == *"0 passed, 1 failed" ]]
}

# Behind scripts/run the tests' folder is as it was: there is nothing to build
# again, and every test program is still there and runs.
run_leaves_the_tests() {
  local programs
  # shellcheck disable=SC2154 # named in scripts/test
  build_all release release "${with_tests[@]}"
  ninja -C build/release | grep -F "no work to do"
  programs=$(ctest --test-dir build/release --show-only=json-v1 |
    jq '.tests | length')
  echo "$programs test programs"
  ((programs >= 15))
  ctest --test-dir build/release -R '^adts_test$' --output-on-failure
}
