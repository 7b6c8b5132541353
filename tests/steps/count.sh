#!/usr/bin/env bash
# Runs a program of tests that count instructions:
#
#     count.sh VALGRIND PROGRAM [OPTION...]
set -euo pipefail
valgrind=$1
shift
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export CALLGRIND_OUT_FILE=$folder/counts
"$valgrind" -q --tool=callgrind --callgrind-out-file="$CALLGRIND_OUT_FILE" "$@"
