# shellcheck shell=bash
# The example of a unit for systemd: its words, and its commands as they are.
# Sourced.

unit=docs/corvane-recorder.service

# unit_command NAME: what systemd would run, its own escapes undone.
unit_command() {
  sed -nE "s/^$1=-?//p" "$unit" | sed -e 's/\$\$/$/g' -e 's/%%/%/g'
}

# unit_records: a take that is stopped, and one that is killed, end up sealed
# outside the folder of unfinished ones.
unit_records() {
  local folder=$PWD/build/unit corvane=$PWD/build/release before start after
  systemd-analyze verify --man=no "$PWD/$unit"
  before=$(unit_command ExecStartPre)
  start=$(unit_command ExecStart)
  after=$(unit_command ExecStopPost)
  rm -rf "$folder"
  mkdir -p "$folder/unfinished" "$folder/bin"
  # Two takes within a second would have one name.
  printf '#!/bin/sh\nls "%s" | wc -l\n' "$folder" >"$folder/bin/date"
  chmod +x "$folder/bin/date"
  make_faulty_microphone "$folder/asound.conf"
  (
    cd "$folder" && export PATH=$folder/bin:$corvane:$PATH
    run_unit "$start" TERM
    eval "$after"
    run_unit "$start" KILL || true
    corvane info unfinished/*.aac
    eval "$before"
    corvane info ./*.aac
    [[ -z $(ls unfinished) && $(find . -maxdepth 1 -name '*.aac' | wc -l) == 2 ]]
  )
}

# run_unit COMMAND SIGNAL: sent as soon as there is a file with sound in it.
run_unit() {
  local pid
  eval "$1 &"
  pid=$!
  until [[ -n $(find unfinished -name '*.aac' -size +0) ]]; do
    kill -0 "$pid" || return 1
  done
  kill -s "$2" "$pid"
  wait "$pid"
}
