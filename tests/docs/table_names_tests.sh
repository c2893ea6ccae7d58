#!/bin/sh
# Every test that a page names in backticks as Suite.Test exists, in C++ or in Java (Class.method):
# table_names_tests.sh PAGE PROJECT
page="$1"
project="$2"
count=0
missing=0
for name in $(grep -o '`[A-Z][A-Za-z0-9]*\.[A-Za-z0-9_]*`' "$page" | tr -d '`' | sort -u); do
  suite="${name%%.*}"
  test="${name#*.}"
  count=$((count + 1))
  if ! grep -rqE --include='*.cpp' "^TEST(_F|_P)?\($suite, *$test\)" "$project/tests" &&
     ! grep -rqE --include="$suite.java" "^ *void $test\(" "$project/java/src/test"; then
    echo "$page names $name, which is no test"
    missing=$((missing + 1))
  fi
done
[ "$count" -gt 0 ] || { echo "$page names no test"; exit 1; }
[ "$missing" -eq 0 ] && echo "$count tests are named"
