#!/bin/sh
# Builds Verify.jar in the folder given, by default the current one. For every Java from 8 on.
set -eu
target=${1:-.}
source=$(cd "$(dirname "$0")" && pwd)
classes=$(mktemp -d)
trap 'rm -rf "$classes"' EXIT
javac -Xlint:-options --release 8 -encoding UTF-8 -d "$classes" "$source"/com/vantu/util/jvm/*.java
jar cfe "$target/Verify.jar" com.vantu.util.jvm.Validator -C "$classes" .
