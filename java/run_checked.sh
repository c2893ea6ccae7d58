#!/usr/bin/env bash
# Runs a program in a virtual machine that checks native calls (-Xcheck:jni), passes its output on and judges it:
# run_checked.sh COMMAND ARGUMENT... The status is the program's or, where that is 0, 1 for a fault of ours.
#
# The machine names who made a bad call in the first frame below its warning. The JDK's own native methods, of which
# some releases are not free of them, are let pass; every other one counts, and so does a warning without frames,
# which a thread of the engine's own has. What ends the machine and what the sanitizers report always counts.
set -uo pipefail

judge='
# Of the machine, that is; the frames of an exception have no version of a module in them.
function is_frame(line) { return line ~ /^[ \t]*at [^ ]+\(.*\)$/ }
function is_of_the_jdk(line) { return line ~ /\((java|jdk)\.[a-z.]+@[^\/]+\/Native Method\)$/ }
function fault(words) { faults[++count] = words }
function settle() { if (pending != "") fault(pending); pending = "" }

{ print; fflush() }
/FATAL ERROR in native method|AddressSanitizer|runtime error:/ { settle(); fault($0); next }
/WARNING: JNI|WARNING in native method/ { settle(); pending = $0; others = 0; next }
pending != "" && is_of_the_jdk($0) { pending = ""; next }
pending != "" && is_frame($0) { pending = pending " <-" $0; settle(); next }
# Other threads print too, so a few lines may come between a warning and its frames.
pending != "" && ++others > 3 { settle() }
END {
  settle()
  for (i = 1; i <= count; ++i) print "FAULT OF NATIVE CODE: " faults[i]
  exit count > 0
}'

# A sanitizer that is loaded before the machine is not for awk, whose own reads it would report.
"$@" 2>&1 | env -u LD_PRELOAD awk "$judge"
statuses=("${PIPESTATUS[@]}")
[[ ${statuses[0]} -eq 0 ]] || exit "${statuses[0]}"
exit "${statuses[1]}"
