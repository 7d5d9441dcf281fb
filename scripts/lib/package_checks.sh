# shellcheck shell=bash
# The test command's checks of Corvane as a package: inside an application's
# build, and as an installed program. Sourced; told from the root of the
# checkout. They use what build/release holds already.

application=build/application

# lay_out_application: the example's own linux/ folder, with a runner that needs
# no Dart, and beside it what the Flutter tool would have left there.
lay_out_application() {
  local ephemeral=$application/linux/flutter/ephemeral
  local tool=$application/flutter/packages/flutter_tools/bin
  rm -rf "$application"
  mkdir -p "$application" "$tool"
  cp -r example/linux "$application"
  rm -rf "$ephemeral"
  cp tests/application/{main.cc,my_application.cc,my_application.h} \
    "$application/linux/runner"
  cp tests/application/tool_backend.sh "$tool"
  lay_out_engine "$application/engine" \
    build/release/embedding/libflutter_linux_gtk.so
  mkdir -p "$ephemeral/.plugin_symlinks"
  ln -s "$PWD" "$ephemeral/.plugin_symlinks/corvane"
  cat >"$ephemeral/generated_config.cmake" <<END
set(FLUTTER_ROOT "$PWD/$application/flutter")
set(PROJECT_DIR "$PWD/$application")
list(APPEND FLUTTER_TOOL_ENVIRONMENT
  "PROJECT_DIR=$PWD/$application" "ENGINE=$PWD/$application/engine")
END
}

# application_builds_with C++-COMPILER: in all three build types. The standard
# is the one that applications name as the least; a newer default of the
# compiler would hide C++17 that leaks out of the plugin.
application_builds_with() {
  local type
  for type in Debug Profile Release; do
    build_application "$1" $type
    bundle_is_sound "$application/build/$1-$type/bundle"
  done
}

# build_application COMPILER TYPE [SETTING]...
build_application() {
  local compiler=$1 type=$2 folder=$application/build/$1-$2
  cmake -G Ninja -S "$application/linux" -B "$folder" \
    "-DCMAKE_BUILD_TYPE=$type" -DFLUTTER_TARGET_PLATFORM=linux-x64 \
    "-DCMAKE_CXX_COMPILER=$compiler" -DCMAKE_CXX_STANDARD=14 \
    -DCMAKE_CXX_FLAGS="-Wall -Wextra" "${@:3}"
  ninja -C "$folder" install
}

# bundle_is_sound FOLDER: somewhere else than it was built, and with no part of
# the environment to help it.
bundle_is_sound() {
  local place plugin figures
  place=$(mktemp -d)
  # shellcheck disable=SC2064 # this place, not a later one
  trap "rm -rf '$place'" EXIT
  mv "$1" "$place/moved"
  plugin=$place/moved/lib/libcorvane_plugin.so
  libraries_are_at_hand "$place/moved/corvane_example" "$place/moved/lib"
  libraries_are_at_hand "$plugin" "$place/moved/lib"
  needs_ffmpeg_alone "$place/moved/corvane_example" "$plugin"
  figures=$(cd / && env -i "$place/moved/corvane_example" "$place/take.aac")
  [[ $figures == "1024 $(stat -c %s "$place/take.aac")" ]]
  rm -rf "$place"
}

# libraries_are_at_hand FILE FOLDER: all are found, ours in the folder, and no
# place is named to look in but those beside the file.
libraries_are_at_hand() {
  local found
  found=$(ldd "$1")
  echo "$found"
  ! grep -F "not found" <<<"$found" || return
  [[ $found == *"=> $2/libflutter_linux_gtk.so "* ]] || return
  readelf -d "$1" | sed -nE 's/.*(RPATH|RUNPATH).*\[(.*)\]/\2/p' |
    tr : '\n' | { ! grep -vxE '[$]ORIGIN(/lib)?'; }
}

# needs_ffmpeg_alone PROGRAM PLUGIN: on top of what the program needs itself.
needs_ffmpeg_alone() {
  local more
  more=$(comm -13 <(needed "$1") <(needed "$2") | tr '\n' ' ')
  echo "$more"
  [[ $more =~ ^libavcodec[.]so[.][0-9]+\ libavutil[.]so[.][0-9]+\ $ ]]
}

needed() {
  readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | sort
}

# missing_ffmpeg_is_named: the one sentence, from an application's build and
# from the stand-alone one; and the same where FFmpeg is too old.
missing_ffmpeg_is_named() {
  local folder=build/without_ffmpeg paths=()
  rm -rf "$folder"
  mkdir -p "$folder/pkgconfig" "$folder/older"
  IFS=: read -ra paths < <(pkg-config --variable pc_path pkg-config)
  find -L "${paths[@]}" -name '*.pc' ! -name 'libav*' -exec \
    ln -sf -t "$folder/pkgconfig" {} + 2>/dev/null || true # not all are there
  printf '%s\n' 'Name: libavcodec' 'Description: of 2021' 'Version: 58.134' \
    >"$folder/older/libavcodec.pc"
  export PKG_CONFIG_LIBDIR=$PWD/$folder/pkgconfig
  names_ffmpeg "$application/linux" "$folder/application"
  names_ffmpeg . "$folder/alone"
  unset PKG_CONFIG_LIBDIR
  PKG_CONFIG_PATH=$PWD/$folder/older names_ffmpeg . "$folder/alone"
}

# names_ffmpeg SOURCES FOLDER. CMake wraps what it says.
names_ffmpeg() {
  local said
  if said=$(cmake -G Ninja -S "$1" -B "$2" 2>&1); then return 1; fi
  said=$(tr -s ' \n' ' ' <<<"$said")
  echo "$said"
  [[ $said == *"Corvane needs the development files of FFmpeg 5.1 or later:\
 install libavcodec-dev and libavutil-dev on Debian and Ubuntu,\
 libavcodec-free-devel and libavutil-free-devel on Fedora, ffmpeg on Arch."* ]]
}

# The header that applications compile, with everything that clang can say: the
# embedding and GLib are not ours, and the name of the struct is what GLib's
# own macros would have made it.
public_header_is_clean() {
  local flags unit='#include <corvane/corvane_plugin.h>'
  read -ra flags < <(pkg-config --cflags gtk+-3.0 gmodule-2.0 |
    sed 's/-I/-isystem /g')
  flags+=(-isystem "$application/engine" -Iinclude
    -Weverything -Werror -Wno-reserved-identifier -fsyntax-only)
  clang++ -x c++ -std=c++14 "${flags[@]}" - <<<"$unit"
  clang++ -x c++ -std=c++14 -DFLUTTER_PLUGIN_IMPL "${flags[@]}" - <<<"$unit"
  clang -x c -std=c99 "${flags[@]}" - <<<"$unit"
}

# installs_as_a_program: under another prefix than it was built for, and with
# no need of the build folder.
installs_as_a_program() {
  local place=$PWD/build/installed library
  rm -rf "$place"
  cmake --install build/release --prefix "$place/first"
  mv "$place/first" "$place/usr"
  for library in libcorvane_plugin.so libflutter_linux_gtk.so; do
    ldd "$place/usr/bin/corvane" |
      grep -F "$library => $place/usr/bin/../lib" | grep -F /corvane/
  done
  [[ ! -e $place/usr/include ]] # without the embedding's it can't be compiled
  is_hardened "$place/usr/bin/corvane" "$place"/usr/lib*/{,*/}corvane/*.so
  [[ $(gzip -dc "$place"/usr/share/man/man1/corvane.1.gz) == \
    "$(<docs/corvane.1)" ]]
  cmp packaging/corvane.bash \
    "$place/usr/share/bash-completion/completions/corvane"
  cmp LICENSE "$place/usr/share/doc/corvane/copyright"
  # shellcheck disable=SC2154 # the sample is named in checks.sh
  (cd / && "$place/usr/bin/corvane" record -i "$sample" "$place/take.aac")
  manual_is_sound "$place/usr/bin"
  completion_is_sound "$place/usr/bin/corvane"
}

# is_hardened FILE...: as packages have to be.
is_hardened() {
  local file flags
  for file; do
    [[ -e $file ]] || continue # where libraries lie differs
    flags=$(readelf -d "$file")
    grep -E 'BIND_NOW|Flags: NOW' <<<"$flags"
    readelf -lW "$file" | grep GNU_RELRO
  done
}

# manual_is_sound BIN: it is good troff, of this version, and each example that
# it and the help show does what it says.
manual_is_sound() {
  local complaints example version
  complaints=$(groff -man -Tutf8 -ww -z docs/corvane.1 2>&1)
  [[ -z $complaints ]]
  version=$("$1/corvane" --version)
  grep -F ".TH CORVANE 1 " docs/corvane.1 | grep -F "\"$version\""
  "$1/corvane" --help | grep -F "Examples:"
  while IFS= read -r example; do
    echo "$example"
    prepare_examples build/examples "$1"
    (cd build/examples && PATH=$PWD:$1:$PATH && eval "$example") </dev/null
  done < <(examples "$1/corvane" | sort -u)
}

# examples CORVANE: one a line, out of the manual and every command's help.
examples() {
  local topic
  sed -n '/^\.EX/,/^\.EE/{s/\\-/-/g;/^\./!p}' docs/corvane.1 |
    sed -e ':join' -e '/|$/{N;s/\n */ /;bjoin' -e '}'
  for topic in "" record resume finalize info devices repair-wav; do
    # shellcheck disable=SC2086 # no word for the program itself
    "$1" $topic --help | sed -nE 's/^  ((corvane|arecord) .*[.](aac|wav)( -.*)?)$/\1/p' |
      sed 's/   .*//'
  done
}

# prepare_examples FOLDER BIN: what the examples name, a microphone, and a
# Ctrl-C for the takes that have no end of their own.
prepare_examples() {
  rm -rf "$1"
  mkdir -p "$1"
  cp "$sample" "$1/speech.wav"
  cp "$sample" "$1/rest.wav"
  cp "$sample" "$1/take.wav"
  cp build/installed/take.aac "$1"
  printf '#!/bin/sh\nhead -c 96000 /dev/zero\n' >"$1/arecord"
  printf '#!/bin/sh\nexec timeout -s INT --preserve-status 2 "%s" "$@"\n' \
    "$2/corvane" >"$1/corvane"
  chmod +x "$1/arecord" "$1/corvane"
  make_faulty_microphone "$PWD/$1/asound.conf"
}

# make_faulty_microphone FILE: the tests' own plug-in for ALSA as the default
# device; nobody has told it to fail.
make_faulty_microphone() {
  cat >"$1" <<END
pcm_type.corvane_faults {
  lib "$PWD/build/release/libasound_module_pcm_corvane_faults.so"
}
pcm.!default { type corvane_faults }
pcm.hw {
  @args [ CARD DEV ]
  @args.CARD { type string }
  @args.DEV { type string default "0" }
  type corvane_faults
}
END
  export ALSA_CONFIG_PATH=$1
}

# completion_is_sound CORVANE: it offers what the help lists, and the manual
# has all of it.
completion_is_sound() {
  local topic option listed offered
  # shellcheck source=packaging/corvane.bash
  source packaging/corvane.bash
  [[ $(completions re | sort | tr '\n' ' ') == "record repair-wav resume " ]]
  for topic in record resume finalize info devices repair-wav; do
    listed=$("$1" "$topic" --help | sed -nE \
      's/^  (-[Dhqv],)?(-[a-z]|--[a-z-]+) .*/\2/p' | sort | tr '\n' ' ')
    offered=$(completions "$topic" - | sort | tr '\n' ' ')
    echo "$topic: $listed"
    [[ $listed == "$offered" ]]
    for option in $listed; do
      sed 's/\\-/-/g' docs/corvane.1 | grep -w -e "$option"
    done
  done
  [[ $(completions record LICEN) == LICENSE ]]
}

# completions WORD...: what is offered for the last one.
completions() {
  # shellcheck disable=SC2034 # _corvane reads them
  COMP_WORDS=(corvane "$@") COMP_CWORD=$# COMPREPLY=()
  _corvane
  printf '%s\n' "${COMPREPLY[@]}"
}
