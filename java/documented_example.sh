#!/bin/sh
# Compiles and runs the complete example of the page on Java: documented_example.sh PROGRAM.java JAR VIDEO POSES
set -e
program=$(readlink -f "$1")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
javac -d . -cp "$2" "$program"
java -cp "$2:." GuidedCamera "$3" "$4" > printed.txt
tail -4 printed.txt
grep -q '^RMS 0\.[01]' printed.txt
grep -q '"cameraMatrix"' camera.json
