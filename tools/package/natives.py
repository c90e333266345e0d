"""Tells what native libraries a jar carries: natives.py JAR [--compare DOCUMENT]

Prints the size of the jar, and for each library its own size, the newest versions of the symbols that it asks for, and
the libraries. With --compare it fails unless the document has a row for each library of a platform that the jar has, as
in "| linux-x86_64 | libkrt.so | libc.so.6 libm.so.6 |", whose list the library keeps to, and states a size that the jar
keeps to for each platform, as in "less than 2 MB".
"""

import argparse
import re
import subprocess
import sys
import tempfile
import zipfile
from pathlib import Path


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def needed(path):
    return sorted(re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "--wide", "-d", path)))


def newest_versions(path):
    """The highest version of each family among the symbols that are asked for: GLIBC_2.28, say."""
    highest = {}
    for family, number in re.findall(r"@(GLIBC|GLIBCXX|CXXABI)_([\d.]+)$", run("nm", "-D", "-u", path), re.MULTILINE):
        parts = [int(part) for part in number.split(".")]
        highest[family] = max(highest.get(family, parts), parts)
    return ", ".join(f"{family}_{'.'.join(map(str, parts))}" for family, parts in sorted(highest.items()))


def libraries(jar):
    """Platform, name, size, versions and needs of each library."""
    with zipfile.ZipFile(jar) as archive, tempfile.TemporaryDirectory() as folder:
        for entry in archive.infolist():
            if entry.filename.startswith("natives/") and entry.filename.endswith(".so"):
                path = archive.extract(entry, folder)
                _, platform, name = entry.filename.split("/")
                yield platform, name, entry.file_size, newest_versions(path), needed(path)


def faults_of_document(text, needs, size):
    """`needs` gives the list of libraries by platform and name."""
    table = re.findall(r"^\| (\S+) \| (\S+\.so) \| (.*) \|$", text, re.MULTILINE)
    rows = {(platform, name): listed for platform, name, listed in table}
    platforms = {platform for platform, _ in needs}
    for key in {key for key in rows if key[0] in platforms} | needs.keys():
        if key not in rows or key not in needs:
            yield f"{' '.join(key)} is not in the {'jar' if key in rows else 'document'}"
        elif beyond := set(needs[key]) - set(rows[key].split()):
            yield f"{' '.join(key)} also needs {' '.join(sorted(beyond))}"
    stated = re.search(r"less than (\d+) MB", text)
    if not stated or size >= int(stated[1]) * 1000000 * len(platforms):
        yield f"the jar has {size} bytes, which the document doesn't say"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("jar", type=Path)
    parser.add_argument("--compare", type=Path, metavar="DOCUMENT")
    options = parser.parse_args()
    if not zipfile.is_zipfile(options.jar):
        parser.error(f"{options.jar} is no jar")
    size = options.jar.stat().st_size
    print(f"{options.jar}: {size} bytes")
    needs = {}
    for platform, name, bytes_, versions, needs[platform, name] in libraries(options.jar):
        print(f"  {platform} {name}: {bytes_} bytes, symbols up to {versions}")
        print(f"    needs {' '.join(needs[platform, name])}")
    if not needs:
        print("  no native libraries")
        return 1
    faults = [*faults_of_document(options.compare.read_text(), needs, size)] if options.compare else []
    for fault in faults:
        print(f"{options.compare}: {fault}")
    return 1 if faults else 0


sys.exit(main())
