# shellcheck shell=bash
# The test command's check of what the README tells listeners: each command of
# its section does what stands behind it. Sourced; told from the root of the
# checkout. It uses what build/release holds already.

listeners_are_told_right() {
  local command told=0
  make_long_take build/listening
  while IFS= read -r command; do
    echo "$command"
    (cd build/listening/there && PATH=$PWD/../bin:$PATH && eval "$command") \
      </dev/null
    holds_what_is_told "$command"
    told=$((told + 1))
  done < <(listening_commands)
  ((told == 6))
}

# listening_commands: one a line, without the remarks behind them.
listening_commands() {
  # shellcheck disable=SC2016 # fences, and nothing to expand
  sed -n '/^## Listening/,/^## [^L]/{/^```/,/^```/{/^```/!p}}' README.md |
    sed 's/  *#.*//'
}

# make_long_take FOLDER: a take of 816 frames, in there/; in bin/ a player that
# needs no loudspeaker and stops after a second.
make_long_take() {
  local take=$1/there/take.aac
  rm -rf "$1"
  mkdir -p "$1/there" "$1/bin"
  # shellcheck disable=SC2154 # the sample is named in checks.sh
  ffmpeg -v error -nostdin -stream_loop 12 -i "$sample" \
    -af atrim=end_sample=834560 "$1/speech.wav"
  build/release/corvane record -i "$1/speech.wav" "$take" >"$1/take.json"
  [[ $(jq .durationMs "$1/take.json") == 17408 ]]
  printf '#!/bin/sh\nexport SDL_AUDIODRIVER=dummy\nexec %s -t 1 "$@"\n' \
    "$(command -v ffplay)" >"$1/bin/ffplay"
  chmod +x "$1/bin/ffplay"
}

# holds_what_is_told COMMAND: of the file that it made, if it is to make one.
holds_what_is_told() {
  local file=build/listening/there/${1##* } least most milliseconds
  case $1 in
    ffplay*) return ;;
    *" -c copy take.m4a") least=17408 most=17408 ;;
    *" take.mp3") least=17408 most=17480 ;; # filled up to a frame of its own
    *" take.wav") least=17408 most=17408 ;;
    *" cut.m4a") least=5000 most=5022 ;; # to a whole frame
    *) return 1 ;;
  esac
  milliseconds=$(milliseconds_of "$file")
  echo "$milliseconds ms, $least to $most"
  ((milliseconds >= least && milliseconds <= most))
  ffmpeg -v error -nostdin -i "$file" -f null - 2>build/listening/complaints
  [[ ! -s build/listening/complaints ]]
}

# milliseconds_of FILE: as players show it.
milliseconds_of() {
  ffprobe -v error -show_entries format=duration -of csv=p=0 "$1" |
    awk '{ printf "%.0f", $1 * 1000 }'
}
