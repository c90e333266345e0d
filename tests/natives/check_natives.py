"""Reads from finished libraries and programs what protects them: check_natives.py [--guarded] [--fortified] [--marked] FILE...

Prints each fault, and fails when there is one. The options tell what the compiler was asked for: guarded stacks, checked
bounds in calls of the C library, marked targets of jumps.
"""

import re
import subprocess
import sys
from pathlib import Path

ENDBR64 = "f3 0f 1e fa"
# What others have too, and a host program may have of another version.
FOREIGN = re.compile(r"^_ZN?K?(St|Sa|Ss|9__gnu_cxx|5boost|3fmt|8nlohmann)|^_ZT.N?K?(St|5boost|3fmt|8nlohmann)"
                     r"|^_Z(nw|na|dl|da)|^(sodium|crypto|cbor|inflate|deflate|XXH)")


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def faults_of_header(path):
    header = run("readelf", "--wide", "-l", "-d", path)
    stack = re.search(r"GNU_STACK.*?\s([RWE]+)\s", header)
    if not stack or "E" in stack[1]:
        yield "the stack can be executed"
    if "GNU_RELRO" not in header or not re.search(r"\((FLAGS|FLAGS_1)\).*(BIND_NOW|NOW)", header):
        yield "tables of addresses stay writable"
    if "(RUNPATH)" in header:
        yield "RUNPATH, which LD_LIBRARY_PATH comes before"
    if re.search(r"\(NEEDED\).*\[libkrt\.so\]", header) and Path(path).parent.name in ("lib", "bin"):
        if not re.search(r"\(RPATH\).*\[\$ORIGIN(/\.\./lib)?(:|\])", header):
            yield "does not look for libkrt.so in its own folder"


def symbols(path, *options):
    """Names of the dynamic symbols, without versions."""
    lines = run("nm", "-D", *options, path).splitlines()
    return [line.split()[-1].split("@")[0] for line in lines]


def faults_of_symbols(path, options):
    imports = set(symbols(path, "--undefined-only"))
    exports = symbols(path, "--defined-only")
    name = Path(path).name
    if "--guarded" in options and name != "libloomkit.so" and "__stack_chk_fail" not in imports:
        yield "no stack protector"
    if name == "libkrt.so":
        if "--fortified" in options and not any(re.match(r"__\w+_chk$", symbol) for symbol in imports - {"__stack_chk_fail"}):
            yield "no bounds are checked in calls of the C library"
        if "KRT_1" not in exports:
            yield "its symbols have no version"
        for symbol in filter(FOREIGN.search, exports):
            yield f"exports {symbol}"


def faults_of_code(path):
    """An indirect call may reach every exported function, so each begins with the mark of a target."""
    for line in run("nm", "-D", "--defined-only", path).splitlines():
        address, kind, symbol = line.split()
        if kind == "T" and re.match(r"(Java_|JNI_|krt[A-Z]|qx[A-Z])", symbol):
            code = run("objdump", "-d", f"--start-address=0x{address}", f"--stop-address={int(address, 16) + 4}", path)
            if ENDBR64 not in " ".join(code.split()):
                yield f"no mark of a jump target at {symbol}"
            return


def main():
    options = [argument for argument in sys.argv[1:] if argument.startswith("--")]
    paths = [argument for argument in sys.argv[1:] if not argument.startswith("--")]
    count = 0
    for path in paths:
        faults = [*faults_of_header(path), *faults_of_symbols(path, options)]
        if "--marked" in options and Path(path).name != "kpa":
            faults += faults_of_code(path)
        for fault in faults:
            print(f"{path}: {fault}")
        count += len(faults)
    print(f"{len(paths)} files, {count} faults")
    return 1 if count or not paths else 0


sys.exit(main())
