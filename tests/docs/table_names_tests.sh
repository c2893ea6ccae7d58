#!/bin/sh
# Every test that a page names in backticks as Suite.Test exists, in C++ or in Java (Class.method):
# table_names_tests.sh PAGE PROJECT
# Each section speaks of each kind of wrong, and each row names a test or says that the kind does not apply.
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
awk -F'|' '
  function check() {
    n = split("absent,empty,broken,wrong type,wrong size,too large,unknown", kinds, ",")
    for (i = 1; i <= n; ++i) if (section != "" && !(kinds[i] in seen)) {
      print "the section" section " says nothing of: " kinds[i]; wrong = 1
    }
    split("", seen)
  }
  /^## / { check(); section = substr($0, 3) }
  section != "" && /^\| / && !/^\| wrong \|/ {
    m = split($2, said, ",")
    for (i = 1; i <= m; ++i) { gsub(/^ +| +$/, "", said[i]); seen[said[i]] = 1 }
    if ($3 !~ /does not apply/ && $5 !~ /`/) { print "no test in: " $0; wrong = 1 }
  }
  END { check(); exit wrong }' "$page" || missing=$((missing + 1))
[ "$count" -gt 0 ] || { echo "$page names no test"; exit 1; }
[ "$missing" -eq 0 ] && echo "$count tests are named"
