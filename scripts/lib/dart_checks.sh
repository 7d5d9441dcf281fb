# shellcheck shell=bash
# The checks of the Flutter package, which need no Dart SDK. Sourced; told from
# the root of the checkout.

# Node and npm are used where they are, and installed where they are not.
install_node() {
  local missing=()
  command -v node >/dev/null || missing+=(nodejs)
  command -v npm >/dev/null || missing+=(npm)
  ((${#missing[@]} == 0)) || install_missing "${missing[@]}"
}

# The parser goes to the build folder, so that the sources stay as they are.
dart_holds_together() {
  local folder=build/dart_checks
  mkdir -p "$folder"
  if ! cmp -s tests/dart/package-lock.json "$folder/installed-lock.json"; then
    cp tests/dart/{package.json,package-lock.json,.npmrc} "$folder"
    (cd "$folder" && npm ci)
    cp tests/dart/package-lock.json "$folder/installed-lock.json"
  fi
  node tests/dart/check.mjs "$folder/node_modules"
}

# The other gate can't be run here: that it says what it needs, and with an SDK
# on the path takes every step and fails with each of them, can be shown.
flutter_gate_holds() {
  local step steps
  gate_names_what_it_needs
  steps=$(flutter_steps 0)
  diff - <(echo "$steps") <<END
flutter pub get
flutter analyze
dart format --output=none --set-exit-if-changed lib test example
flutter test
flutter pub get
flutter test
flutter build linux
flutter test integration_test -d linux
END
  for ((step = 1; step <= $(wc -l <<<"$steps"); step++)); do
    ! flutter_steps "$step" || return
  done
  ! LEFT_BEHIND=example/left_behind flutter_steps 0 || return
  tool_leavings_are_ignored
  grep -xF "      - run: scripts/test" .github/workflows/checks.yml
  grep -xF "      - run: xvfb-run -a scripts/check-flutter" \
    .github/workflows/checks.yml
}

# With a path of its own: nobody knows where an SDK may be.
gate_names_what_it_needs() {
  local place=$PWD/build/without_flutter status=0 tool
  rm -rf "$place" && mkdir "$place"
  for tool in bash dirname readlink; do
    ln -s "$(command -v $tool)" "$place"
  done
  PATH=$place scripts/check-flutter >"$place/out" 2>"$place/err" || status=$?
  ((status == 2))
  [[ ! -s $place/out && $(wc -l <"$place/err") == 1 ]]
  grep -F "needs a Flutter SDK on the path" "$place/err"
}

# flutter_steps FAILING: prints what scripts/check-flutter asks of an SDK whose
# call number FAILING fails; with the SDK leaving the file $LEFT_BEHIND.
flutter_steps() {
  local place=$PWD/build/with_flutter status=0 tool
  rm -rf "$place" && mkdir "$place"
  for tool in flutter dart; do
    cat >"$place/$tool" <<END
#!/bin/sh
echo "$tool \$*" >>"$place/calls"
[ -z "${LEFT_BEHIND:-}" ] || : >"$PWD/${LEFT_BEHIND:-}"
[ "\$(wc -l <"$place/calls")" -ne "$1" ]
END
    chmod +x "$place/$tool"
  done
  PATH=$place:$PATH scripts/check-flutter >"$place/log" 2>&1 || status=$?
  [[ -z ${LEFT_BEHIND:-} ]] || rm -f "$LEFT_BEHIND"
  cat "$place/calls"
  return $status
}

# What the Flutter tool writes that is no source leaves the tree clean.
tool_leavings_are_ignored() {
  local file
  for file in {,example/}{.dart_tool/package_config.json,pubspec.lock} \
    {,example/}.flutter-plugins{,-dependencies} \
    example/build/linux/x64 example/linux/flutter/ephemeral/icudtl.dat; do
    git check-ignore --no-index "$file"
  done
}

# Prints the files that would be published: all that .pubignore leaves.
published_files() {
  comm -23 <(git ls-files --cached --others --exclude-standard | sort) \
    <(git ls-files --cached --others --exclude-standard |
      git -c core.excludesFile="$PWD/.pubignore" check-ignore --no-index --stdin |
      sort)
}

# What a package needs is in it, and nothing else of weight.
package_is_small() {
  local list bytes needed
  list=$(published_files)
  bytes=$(published_files | xargs -d '\n' cat -- | wc -c)
  echo "$list"
  echo "$bytes bytes"
  ((bytes < 1048576))
  for needed in LICENSE README.md CHANGELOG.md pubspec.yaml lib/corvane.dart \
    linux/CMakeLists.txt src/CMakeLists.txt src/plugin/corvane_plugin.cc \
    include/corvane/corvane_plugin.h example/lib/main.dart; do
    [[ $'\n'$list$'\n' == *$'\n'$needed$'\n'* ]]
  done
  ! grep -E '^(build|tests|embedding|host|scripts|[.]github)/' <<<"$list"
}
