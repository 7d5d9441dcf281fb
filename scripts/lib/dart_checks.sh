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
  ! grep -E '^(build|tests|embedding|host|scripts)/' <<<"$list"
}
