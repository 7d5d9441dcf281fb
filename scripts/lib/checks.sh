# shellcheck shell=bash
# The test command's checks, told from the root of the checkout. Sourced.

sample=/usr/share/sounds/alsa/Front_Center.wav

scripts_are_sound() {
  shellcheck -x scripts/run scripts/test scripts/bench scripts/crash-demo \
    bench/compare bench/charts bench/flush bench/arm \
    scripts/crash-test scripts/power-cut scripts/power-demo scripts/fuzz \
    scripts/soak scripts/coverage scripts/counts scripts/mutants scripts/check-debian scripts/check-package \
    scripts/check-flutter \
    packaging/corvane.bash \
    tests/application/tool_backend.sh \
    scripts/lib/*.sh \
    .ci/run
}

# C and C++ files, wherever they are outside the build folders.
sources_are_formatted() {
  find . -path ./build -prune -o -type f \
    \( -name '*.c' -o -name '*.cc' -o -name '*.h' \) -print0 |
    xargs -0 clang-format --dry-run -Werror --ferror-limit=1
}

# Headers are looked at through the sources that include them.
sources_are_tidy() {
  ls build/asan/compile_commands.json
  find src host embedding -name '*.cc' -print0 |
    xargs -0 -n 1 -P "$(nproc)" clang-tidy --quiet -p build/asan
}

# What the README promises of the first command.
run_keeps_its_word() {
  local folder=build/run_check
  rm -rf "$folder" && mkdir "$folder"
  scripts/run >"$folder/demo.txt"
  [[ $(head -n 1 "$folder/demo.txt" | jq -r .path) == build/demo/* ]]
  grep -F "68 frames of 1024 samples, 1450 ms" "$folder/demo.txt"
  # A build in the middle of the run must not get into the result.
  touch host/main.cc
  cd "$folder" || return
  ../../scripts/run record -i "$sample" take.aac >take.json
  jq -e --argjson size "$(stat -c %s take.aac)" --slurp 'length == 1 and
    (.[0] | .bytes == $size and .durationMs == .sourceDurationMs)' take.json
  ffmpeg -v error -i take.aac -f null - 2>complaints.txt
  [[ ! -s complaints.txt ]]
  # Whatever a further run would have to wait for.
  [[ ../release/build.ninja -nt ../../CMakePresets.json ]]
  ninja -C ../release corvane corvane_plugin | grep -F "no work to do"
}

# Without root and without sudo all that is left is to say what to do.
packages_are_named_without_root() {
  local output=build/test_logs/packages status=0
  # shellcheck disable=SC2317 # install_missing calls both
  (
    missing_packages() { echo some-package; }
    becoming_root() { return 1; }
    install_missing some-package >"$output.out" 2>"$output.err"
  ) || status=$?
  ((status == 1))
  [[ ! -s $output.out ]]
  grep -F "apt-get install --no-install-recommends some-package" "$output.err"
}
