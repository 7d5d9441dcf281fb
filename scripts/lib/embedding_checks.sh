# shellcheck shell=bash
# The test command's checks against a Flutter SDK's folder: build/flutter_sdk,
# with the SDK's own library where CORVANE_FLUTTER_DIR names one, else with the
# stand-in's variant that has that library's ways. Sourced; told from the root
# of the checkout.

# Where the embedding matters; the other programs meet it as these do.
embedding_tests=(channel_test embedding_test host_test two_plugins_test)

# lay_out_engine FOLDER LIBRARY: like a Flutter SDK's engine artifacts:
# CORVANE_FLUTTER_DIR's, or LIBRARY with the stand-in's headers. As old as they
# are, so that nothing is compiled again for a copy.
lay_out_engine() {
  rm -rf "$1"
  mkdir -p "$1"
  if [[ -n ${CORVANE_FLUTTER_DIR:-} ]]; then
    cp -rp "$CORVANE_FLUTTER_DIR"/{libflutter_linux_gtk.so,flutter_linux} "$1"
  else
    cp -rp "$2" embedding/include/flutter_linux "$1"
  fi
}

# With no preset, as one would build it there; and with the tests, unoptimised,
# since that compiles sooner than it runs.
builds_against_sdk_folder() {
  local sdk=$PWD/build/flutter_sdk folder=build/against_sdk
  build build/release flutter_linux_gtk_as_real
  lay_out_engine "$sdk" build/release/embedding_as_real/libflutter_linux_gtk.so
  rm -f "$folder/take.aac"
  cmake --fresh -S . -B "$folder" -G Ninja "-DCORVANE_FLUTTER_DIR=$sdk" \
    -DCORVANE_BUILD_TESTS=ON -DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O0
  ninja -C "$folder" corvane corvane_plugin "${embedding_tests[@]}"
  [[ ! -e $folder/embedding ]]
  ldd "$folder/corvane" | grep -F "$sdk/libflutter_linux_gtk.so"
  # shellcheck disable=SC2154 # the sample is named in checks.sh
  "$folder/corvane" record -i "$sample" "$folder/take.aac"
}

# tests_against_sdk_folder: those programs' cases there.
tests_against_sdk_folder() {
  local names
  names=$(IFS='|' && echo "${embedding_tests[*]}")
  run_tests against_sdk -R "^($names)\$"
}

# What is not tried there is what tests/stand_in_alone.txt says; its last line
# here is how much that is.
left_out_is_listed() {
  local program left_out=build/against_sdk/left_out.txt
  {
    comm -23 <(programs_of release) <(programs_of against_sdk)
    for program in "${embedding_tests[@]}"; do
      comm -3 <(cases_of release "$program") <(cases_of against_sdk "$program")
    done
  } | sort >"$left_out"
  diff <(grep -vE '^(#|$)' tests/stand_in_alone.txt | sort) "$left_out"
  echo "$(wc -l <"$left_out") left out"
}

# programs_of BUILD: what CTest knows.
programs_of() {
  find "build/$1" -name CTestTestfile.cmake -exec \
    sed -nE 's/^add_test\(\[=\[(.*)\]=\].*/\1/p' {} + | sort
}

# cases_of BUILD PROGRAM: what the program ran, one a line.
cases_of() {
  jq -r --arg program "$2" '.testsuites[].testsuite[]
    | "\($program) \(.classname).\(.name)"' "build/$1/test_results/$2.json" |
    sort
}
