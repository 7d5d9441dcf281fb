# bash completion for corvane                              -*- shell-script -*-

_corvane() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local words=
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    words="record resume finalize info devices repair-wav --help --version"
  elif [[ $word == -* ]]; then
    case ${COMP_WORDS[1]} in
      record | resume)
        words="-i --device -r -c -b --duration --flush-every --realtime --chunk-ms"
        words+=" --no-meter --raw --force"
        [[ ${COMP_WORDS[1]} == record ]] && words+=" --split"
        ;;
      finalize) words="--force" ;;
      devices) words="--json" ;;
      repair-wav) words="-r -c --force" ;;
      info) words="--json" ;;
    esac
    words+=" --quiet --verbose --help"
  else
    case $before in
      -D | --device)
        mapfile -t COMPREPLY < <(_corvane_devices "$word")
        return
        ;;
      -r) words="8000 16000 22050 24000 32000 44100 48000 96000" ;;
      -c) words="1 2 3 4 5 6" ;;
      -b) words="32k 64k 96k 128k 192k" ;;
      --flush-every) words="0 0.2 1 5" ;;
      --chunk-ms) words="10 20 50 100" ;;
      --duration | --split) words="90 5m 1h 1:30:00" ;;
      *)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
        ;;
    esac
  fi
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

# Names may have spaces and commas in them, so each is offered quoted.
_corvane_devices() {
  local name
  corvane devices --quiet 2>/dev/null | sed -E 's/^[* ] //; s/  +.*//' |
    while IFS= read -r name; do
      if [[ $name == "$1"* ]]; then printf '%q\n' "$name"; fi
    done
}

complete -F _corvane corvane
