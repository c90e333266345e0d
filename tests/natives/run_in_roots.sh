#!/usr/bin/env bash
# run_in_roots.sh HOST_BUILD: runs the README's example with the packaged jar in roots of Debian 11, 12 and 13 that hold a
# Java runtime and what that needs, and nothing else, and compares the document on packaging with the jar. Ends with 77,
# and the reason, where no such root can be had.
set -euo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
host_build=$1
package=$project/build/package
architecture=$(dpkg --print-architecture)
. "$project/tools/package/roots.sh"

releases=(bullseye:openjdk-11-jre-headless bookworm:openjdk-17-jre-headless trixie:openjdk-21-jre-headless)

skip() {
    echo "skipped: $*"
    exit 77
}

# What a reader of the README has after following it: the program, the jar, and the component at its path.
prepare_example() { # FOLDER
    rm -rf "$1"
    mkdir -p "$1/source" "$1/build/release/components"
    awk '/^```java$/ {inside = 1; next} /^```$/ {inside = 0} inside' "$project/README.md" >"$1/source/Example.java"
    "${JAVA_HOME:?}/bin/javac" --release 11 -cp "$package/loomkit.jar" -d "$1" "$1/source/Example.java"
    cp "$package/loomkit.jar" "$1/"
    cp "$project/components/linalg/component.json" "$1/source/"
    rm "$1/source/Example.java"
    "$host_build/bin/kpa" pack "$1/source" -o "$1/build/release/components/linalg.kpa" \
        --library "linux-$(uname -m)=$package/natives/linux-$(uname -m)/linalg.so"
}

java_in() { # ROOT
    find "$1/usr/lib/jvm" -mindepth 3 -path '*/bin/java' -printf '/usr/lib/jvm/%P\n' | head -n 1
}

reason=$(roots_are_possible) || skip "$reason"
for release in "${releases[@]}"; do
    reason=$(make_root "$package/root-${release%%:*}-$architecture" "${release%%:*}" extract "base-files,${release#*:}") ||
        skip "$reason"
done
"$project/tools/package/package.sh" "$host_build"
/usr/bin/python3 "$project/tools/package/natives.py" "$package/loomkit.jar" --compare "$project/docs/packaging.md"
prepare_example "$package/example"
for release in "${releases[@]}"; do
    root=$package/root-${release%%:*}-$architecture
    java=$(java_in "$root")
    output=$(in_root "$root" "$package/example" /example "$java" -cp /example/loomkit.jar:/example Example)
    echo "${release%%:*}, $java: $output"
    [[ $output == "x = 0.0909090909"*", 0.6363636363"* ]] || die "the README's example says something else there"
done
