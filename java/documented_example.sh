#!/bin/sh
# Compiles and runs the complete example of a page: documented_example.sh PAGE JAR VIDEO POSES
set -e
page=$(readlink -f "$1")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
sed -n '/^```java$/,/^```$/p' "$page" | grep -v '^```' > GuidedCamera.java
javac -cp "$2" GuidedCamera.java
java -cp "$2:." GuidedCamera "$3" "$4" > printed.txt
tail -4 printed.txt
grep -q '^RMS 0\.[01]' printed.txt
grep -q '"cameraMatrix"' camera.json
