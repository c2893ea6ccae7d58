#!/usr/bin/env bash
# scripts/check-words sees words that are planted, and says where they are.
# usage: check_words_test.sh SCRIPT
set -euo pipefail
script=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

mkdir -p "$folder/scripts" "$folder/src/old" "$folder/docs"
cat >"$folder/scripts/words.txt" <<'END'
# Gone.

\bOldName\b
an? old phrase -- docs/history.md src/old
END

fail() {
  echo "$1" >&2
  exit 1
}

# expect STATUS TEXT...: how the script ends, and what it says.
expect() {
  local status=0 said
  said=$("$script" "$folder" 2>&1) || status=$?
  [[ $status == "$1" ]] || fail "status $status instead of $1: $said"
  for text in "${@:2}"; do
    [[ "$said" == *"$text"* ]] || fail "'$text' is not in: $said"
  done
}

printf 'int NewName;\nint OldNames;\n' >"$folder/src/a.cpp"
expect 0

printf 'int NewName;\nint OldName;\n' >"$folder/src/a.cpp"
expect 1 'src/a.cpp:2:int OldName;' 'scripts/words.txt:3'

# Every word is looked for, also after one that was found.
echo 'As an old phrase says' >"$folder/docs/page.md"
expect 1 'src/a.cpp:2:' 'docs/page.md:1:As an old phrase'

# A file of these words that git ignores does not count.
echo '/src/a.cpp' >"$folder/.gitignore"
rm "$folder/docs/page.md"
expect 0

# Exceptions are files and folders.
echo 'As an old phrase says' >"$folder/docs/history.md"
echo 'As a old phrase says' >"$folder/src/old/b.cpp"
expect 0
echo 'OldName' >"$folder/docs/history.md"
expect 1 'docs/history.md:1:OldName'

# A line that is no regular expression is a fault of the list.
echo 'wrong(' >"$folder/scripts/words.txt"
expect 2 'scripts/words.txt:1: not a regular expression: wrong('
