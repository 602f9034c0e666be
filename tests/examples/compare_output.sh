#!/bin/sh
# compare_output.sh <program> <text>: fails when the program fails or prints anything else.
set -eu
printed=$(mktemp)
trap 'rm -f "$printed"' EXIT
"$1" >"$printed" || { echo "$1 failed"; exit 1; }
diff -u "$2" "$printed"
