"""Archives of kpa as other zip readers see them, and zip files of another writer as kpa does.

usage: zip_readers.py KPA LIBRARY [SEED]

Each round packs a random folder with kpa, twice to the same bytes, and compares names and bytes with what zipfile (and
unzip, where it is installed) reads; then writes a random component with zipfile, whose names and sizes kpa has to list and whose bytes
kpa has to verify.
"""

import hashlib
import io
import json
import os
import pathlib
import platform
import random
import shutil
import subprocess
import sys
import tempfile
import zipfile

ROUNDS = 8
PLATFORM = f"{platform.system()}-{platform.machine()}".lower()


class Unseekable(io.RawIOBase):
    """A file that zipfile can't go back in, so that sizes stand behind the contents."""

    def __init__(self):
        self.bytes = bytearray()

    def writable(self):
        return True

    def write(self, data):
        self.bytes += data
        return len(data)


def random_content(source):
    size = source.choice([0, 1, source.randrange(300), source.randrange(200_000)])
    return source.choice([source.randbytes(size), b"abc " * (size // 4), bytes(size)])


def random_files(source):
    names = ["a.txt", "data/b c.bin", "data/deep/~d", "e", "data/f", "Z.Z"]
    return {name: random_content(source) for name in source.sample(names, source.randrange(len(names) + 1))}


def run(*command):
    result = subprocess.run(command, capture_output=True, check=False)
    assert result.returncode == 0, f"{command}: {result.stderr.decode()}"
    return result.stdout


def check_packed(kpa, library, files, folder):
    """What kpa packs is what others read, byte for byte."""
    author = {"name": "sample", "version": "1", "functions": [{"name": "version"}]}
    for name, content in {**files, "component.json": json.dumps(author).encode()}.items():
        path = folder / "c" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
    archive = folder / "c" / "packed.kpa"
    packed = []
    for age, zone in ((0, "UTC"), (40_000_000, "Asia/Kathmandu")):
        # The second time, the first archive lies in the folder.
        os.utime(folder / "c" / "component.json", (age, age))
        os.environ["TZ"] = zone
        run(kpa, "pack", folder / "c", "-o", archive, f"--library={PLATFORM}={library}")
        packed.append(archive.read_bytes())
    assert packed[0] == packed[1], "not the same bytes"
    expected = {**files, f"lib/{PLATFORM}/{library.name}": library.read_bytes()}
    with zipfile.ZipFile(archive) as reader:
        names = reader.namelist()
        assert names[0] == "component.json" and names[1:] == sorted(expected), names
        assert reader.testzip() is None
        for name, content in expected.items():
            assert reader.read(name) == content, name
    if shutil.which("unzip"):
        run("unzip", "-q", "-d", folder / "unzipped", archive)
        for name, content in expected.items():
            assert (folder / "unzipped" / name).read_bytes() == content, name


def check_listed(kpa, library, files, folder, source):
    """What another writer writes is what kpa lists and verifies."""
    entry = f"lib/{PLATFORM}/x.so"
    files = {**files, entry: library.read_bytes()}
    manifest = {"name": "sample", "version": "1", "abi": 1, "libraries": {PLATFORM: entry},
                "functions": [{"name": "version", "symbol": "version", "help": ""}],
                "sha256": {name: hashlib.sha256(content).hexdigest() for name, content in files.items()}}
    entries = list({**files, "component.json": json.dumps(manifest).encode()}.items())
    source.shuffle(entries)
    target = source.choice([io.BytesIO(), Unseekable()])
    with zipfile.ZipFile(target, "w") as writer:
        for name, content in entries:
            stored = isinstance(target, io.BytesIO) and source.random() < 0.3
            writer.writestr(name, content, zipfile.ZIP_STORED if stored else zipfile.ZIP_DEFLATED)
    archive = folder / "foreign.kpa"
    archive.write_bytes(target.getvalue() if isinstance(target, io.BytesIO) else target.bytes)
    listed = run(kpa, "list", archive).decode().split("files:\n")[1]
    expected = "".join(f"{len(content):12}  {name}\n" for name, content in sorted(files.items()))
    assert listed == expected, f"{listed}\nnot\n{expected}"
    run(kpa, "verify", archive)


def main():
    kpa, library = sys.argv[1], pathlib.Path(sys.argv[2])
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else random.SystemRandom().randrange(1 << 32)
    print("seed", seed)
    source = random.Random(seed)
    for _ in range(ROUNDS):
        with tempfile.TemporaryDirectory() as folder:
            check_packed(kpa, library, random_files(source), pathlib.Path(folder))
            check_listed(kpa, library, random_files(source), pathlib.Path(folder), source)


main()
