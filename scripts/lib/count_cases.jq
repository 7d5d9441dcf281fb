# From the results of test programs, in GoogleTest's form: how many cases ran,
# how many of them held, and how many were skipped, which is neither. A disabled
# case has not held. For jq -s.
[.[].testsuites[].testsuite[]] as $all
| ($all | map(select(.result != "SKIPPED"))) as $run
| ($run | map(select(.result == "COMPLETED" and (has("failures") | not)))) as $held
| "\($run | length) \($held | length) \(($all | length) - ($run | length))"
