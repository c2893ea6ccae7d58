#!/bin/sh
# A man page names every option that its program's help does, once, and no other, and loses no text:
# man_pages_tests.sh PAGE PROGRAM
page="$1"
program="$2"
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
"$program" --help > "$work/help"  # one of them fails after its help
grep -oE '^ +(-[a-zA-Z],)?--[a-z][a-z_-]*' "$work/help" | grep -oE -e '--[a-z][a-z_-]*' | sort > "$work/offered"
grep -E '^\.BR' "$page" | sed 's/\\-/-/g' | grep -oE -e '--[a-z][a-z_-]*' | sort > "$work/named"
[ -s "$work/offered" ] || { echo "$program offers no option"; exit 1; }
diff "$work/offered" "$work/named" || { echo "$page differs (<: offered, >: named)"; exit 1; }
# A line of text that begins with a dot is taken for a command, and is not shown; where a default or a list ended in
# dots, one is not enough.
if grep -nE '^\.[^A-Za-z]|^\.[a-z]{3,}|,\.$|: \.+$' "$page"; then echo "$page loses dots"; exit 1; fi
if grep -n 'Posible' "$page"; then echo "$page has a word misspelt"; exit 1; fi
echo "$(wc -l < "$work/offered") options are named"
