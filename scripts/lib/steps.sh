# shellcheck shell=bash
# The test command's steps: each is run, timed and counted. Sourced.

passed=0
failed=0
logs=build/test_logs
declare -A good_in=() bad_in=() # cases, by build and by test program

# attempt LOG COMMAND...: leaves the exit status in `status`. The command has
# a shell of its own, in which any failing line is the end.
attempt() {
  local log=$1
  shift
  set +e
  (set -e && "$@") >"$log" 2>&1 </dev/null
  status=$?
  set -e
}

# report GOOD BAD WHAT LOG SECONDS: counts, and shows the log of a failure.
report() {
  local good=$1 bad=$2 what=$3 log=$4 seconds=$5
  passed=$((passed + good))
  failed=$((failed + bad))
  printf '%-10s %4d s\n' "$what" "$seconds"
  ((bad == 0)) || tail -n 100 "$log"
}

# check NAME COMMAND...: one step that holds or doesn't; `status` tells.
check() {
  local name=$1 started=$SECONDS log status_word=ok bad=0
  log=$logs/${name//[^A-Za-z0-9]/_}.log
  shift
  printf '%-36s ' "$name"
  attempt "$log" "$@"
  ((status == 0)) || { status_word=FAILED && bad=1; }
  report $((1 - bad)) $bad $status_word "$log" $((SECONDS - started))
}

# run_tests BUILD [CTEST ARGUMENT]...: runs every test program that the build
# registered, or those that the arguments choose, three at a time, and counts the
# cases of each.
run_tests() {
  local name=$1 started=$SECONDS log=$logs/tests_$1.log good=0 bad=0
  local results=$PWD/build/$name/test_results program programs
  rm -rf "$results" "build/$name/Testing"
  mkdir -p "$results"
  printf '%-36s ' "tests $name"
  # Asked for first, since the answer replaces the records of a run.
  programs=$(ctest --test-dir "build/$name" "${@:2}" --show-only=json-v1 2>"$log" |
    jq -r '.tests[].name') || programs=
  if [[ -z $programs ]]; then
    echo "build/$name registers no test program." >"$log"
    report 0 1 FAILED "$log" 0
    return
  fi
  # One more than there are cores: those at a terminal or a microphone wait.
  GTEST_OUTPUT=json:$results/ attempt "$log" \
    ctest --test-dir "build/$name" "${@:2}" -j3 --output-on-failure
  while read -r program; do
    count_cases "$results/$program.json" "$(ended_well "$name" "$program")"
    count_in "$program" "$cases_held" "$cases_bad"
  done <<<"$programs"
  count_in "$name" $good $bad
  report $good $bad "$good/$((good + bad))" "$log" $((SECONDS - started))
}

# ended_well BUILD PROGRAM: prints 1, or 0 when CTest counts it as failed.
ended_well() {
  local list=build/$1/Testing/Temporary/LastTestsFailed.log
  if [[ -e $list ]] && grep -q ":$2\$" "$list"; then echo 0; else echo 1; fi
}

# count_cases RESULTS ENDED_WELL: leaves the number of cases that held in
# `cases_held` and the others in `cases_bad`, and adds them to run_tests' good
# and bad. A disabled case hasn't passed; one that was skipped counts as neither,
# and the summary tells why it was. Without results of its own a program is one
# case.
count_cases() {
  local results=$1 ended_well=$2 cases=1 skipped=0
  cases_held=$2
  [[ ! -s $results ]] || read -r cases cases_held skipped < <(
    jq -rs -f scripts/lib/count_cases.jq "$results")
  cases_bad=$((cases - cases_held))
  # A crash, a leak or a time-out spoils a program whose cases all held, and
  # no case at all is no proof.
  ((cases_bad)) || ((ended_well && cases + skipped)) || cases_bad=1
  good=$((good + cases_held))
  bad=$((bad + cases_bad))
}

# count_in LAYER GOOD BAD
count_in() {
  good_in[$1]=$((${good_in[$1]:-0} + $2))
  bad_in[$1]=$((${bad_in[$1]:-0} + $3))
}

# summary: what was run, by test program and by build.
summary() {
  local layer
  printf '\n%-24s %8s %8s\n' "by layer, then by build" passed failed
  for layer in $(printf '%s\n' "${!good_in[@]}" | grep _ | sort) \
    $(printf '%s\n' "${!good_in[@]}" | grep -v _ | sort); do
    printf '  %-22s %8d %8d\n' "$layer" "${good_in[$layer]}" "${bad_in[$layer]}"
  done
  # How much stands behind the few cases of these.
  grep -h '^sweep: [0-9]' build/asan/Testing/Temporary/LastTest.log |
    sed 's/:[^:]*$//' | sort -u || true
  echo "fuzz: $(fuzz_runs) runs"
  # Each with its reason, in the line behind.
  grep -hA1 ': Skipped$' build/*/Testing/Temporary/LastTest.log || true
}

fuzz_runs() {
  sed -nE 's/^Done ([0-9]+) runs.*/\1/p' \
    build/fuzz/Testing/Temporary/LastTest.log | awk '{ n += $1 } END { print n + 0 }'
}
