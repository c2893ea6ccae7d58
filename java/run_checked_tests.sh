#!/usr/bin/env bash
# The check of what a virtual machine prints finds faults of ours, planted ones too, and passes over the JDK's own:
# run_checked_tests.sh RUN_CHECKED FIXTURES [JAVA OPTION...]; with java, each fault is planted in real native code.
set -uo pipefail
run=$1
fixtures=$2
shift 2
failures=0

# expect NAME STATUS WORDS COMMAND...: the command's judged status and (unless empty) words of a fault.
expect() {
  local name=$1 wanted=$2 words=$3 printed status
  shift 3
  printed=$("$run" "$@")
  status=$?
  if [[ $wanted == 0 && $status -ne 0 || $wanted == 1 && $status -eq 0 ]]; then
    echo "FAILED: $name: status $status"
  elif [[ $words == - && $printed == *"FAULT OF NATIVE CODE"* ]]; then
    echo "FAILED: $name: a fault is named"
  elif [[ $words != - && $printed != *"FAULT OF NATIVE CODE: "*"$words"* ]]; then
    echo "FAILED: $name: '$words' is named as no fault"
  else
    echo "passed: $name"
    return
  fi
  echo "$printed"
  failures=$((failures + 1))
}

# Text in place of a fixture.
expect_text() {
  local name=$1 wanted=$2 words=$3 text=$4
  expect "$name" "$wanted" "$words" printf '%b' "$text"
}

ours='\tat com.velotrix.quiverleaf.sdk.Calibration.nNextFrame(Native Method)\n'
jdk='\tat sun.awt.X11.XlibWrapper.XFlush(java.desktop@17.0.15/Native Method)\n'
trace='\tat java.base/java.lang.Object.wait(Native Method)\n'
refs='WARNING: JNI local refs: 33, exceeds capacity: 32\n'
call='WARNING in native method: JNI call made without checking exceptions when required to from CallVoidMethod\n'

expect "a warning of the JDK's own writer, with ours further below" 0 - cat "$fixtures/jpeg_writer_of_the_jdk.txt"
expect_text "no warning at all" 0 - 'INFO  : New points added.\n'
expect_text "references that our method leaves" 1 "exceeds capacity" "$refs$ours$jdk"
expect_text "a call of ours without a check" 1 "without checking exceptions" "$call$ours"
expect_text "a call of the JDK's without a check" 0 - "$call$jdk$ours"
expect_text "ours after one of the JDK's" 1 nNextFrame "$refs$jdk$ours$refs$ours"
expect_text "one of the JDK's after ours" 1 nNextFrame "$refs$ours$refs$jdk"
expect_text "a warning without frames at the end" 1 "exceeds capacity" "$refs"
expect_text "a warning without frames" 1 "exceeds capacity" "${refs}a\nb\nc\nd\n$jdk"
expect_text "a warning without frames before one of the JDK's" 1 "exceeds capacity" "$refs$refs$jdk"
expect_text "lines of another thread before the frames" 0 - "${refs}INFO  : New points added.\n$jdk"
expect_text "an exception's frame, which excuses nothing" 1 "exceeds capacity" "$refs$trace"
expect_text "a frame of the JDK that is no native method" 1 "exceeds capacity" \
  "$refs\tat java.util.List.of(java.base@17.0.15/List.java:10)\n"
expect_text "the machine's end" 1 "FATAL ERROR" "FATAL ERROR in native method: Bad reference\n$jdk"
expect_text "the address sanitizer" 1 AddressSanitizer "==7==ERROR: AddressSanitizer: heap-use-after-free\n"
expect_text "undefined behaviour" 1 "runtime error:" "a.cpp:1:2: runtime error: signed integer overflow\n"
expect "the program's own failure" 1 - false
expect "faults on standard error" 1 "exceeds capacity" sh -c "printf '%b' '$refs$ours' >&2"

# Later virtual machines (17.0.21 is one) do not count local references: of those there is nothing to be found.
expect_leak() {
  local name=$1
  shift
  if "$@" 2>&1 | grep -q "exceeds capacity"; then
    expect "$name" 1 "exceeds capacity" "$@"
  else
    echo "skipped: $name: this virtual machine does not count local references"
  fi
}

if [[ $# -gt 0 ]]; then
  expect "planted: nothing" 0 - "$@" nothing
  expect_leak "planted: leaked references" "$@" leak
  expect_leak "planted: leaked references on a thread of its own" "$@" leak-on-a-thread
  expect "planted: a call without a check" 1 "without checking exceptions" "$@" unchecked
  expect "planted: no reference" 1 "FATAL ERROR" "$@" garbage
fi
exit $((failures > 0))
