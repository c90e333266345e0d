"""Reads from finished libraries and programs what protects them and what they need of a system.

Usage: check_natives.py [--guarded] [--fortified] [--marked] [--oldest VERSION...] FILE...

Prints each fault, and fails when there is one. The first options tell what the compiler was asked for: guarded stacks,
checked bounds in calls of the C library, marked targets of jumps. After --oldest come the newest versions of symbols that
the oldest system has which the files must run on: GLIBC_2.31 GLIBCXX_3.4.28, say.
"""

import argparse
import re
import subprocess
import sys
from pathlib import Path

ENDBR64 = "f3 0f 1e fa"
# What every Linux with a Java virtual machine has, and one another. The last three are in libc itself since glibc 2.34.
SYSTEM = re.compile(r"(libc|libm|libgcc_s|libstdc\+\+|ld-linux-[a-z0-9-]+|libpthread|libdl|librt)\.so\.\d+")
# Of the library each class loader has a copy, found by its folder alone; of the runtime there is one.
OWN = ("libkrt.so", "$ORIGIN/libnativevrl.so")
# What others have too, and a host program may have of another version.
FOREIGN = re.compile(r"^_ZN?K?(St|Sa|Ss|9__gnu_cxx|5boost|3fmt|8nlohmann)|^_ZT.N?K?(St|5boost|3fmt|8nlohmann)"
                     r"|^_Z(nw|na|dl|da)|^(sodium|crypto|inflate|deflate|XXH)")
EXPORTS_OF_LIBRARY = re.compile(r"^(Java_com_norvane_|JNI_com_norvane_|nativevrl_|_ZN22JNumberFormatException|_ZT[ISV]22JNumberFormat)")


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


def needed(path):
    """Names of the libraries that a file asks the loader for."""
    return re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "--wide", "-d", path))


def symbols(path, *options):
    """The dynamic symbols as pairs of kind and name, the version still behind the name."""
    return [line.split()[-2:] for line in run("nm", "-D", *options, path).splitlines()]


def faults_of_needs(path, oldest):
    for library in needed(path):
        if library not in OWN and not SYSTEM.fullmatch(library):
            yield f"needs {library}"
    limits = dict(version.rsplit("_", 1) for version in oldest)
    for _, symbol in symbols(path, "--undefined-only"):
        family, _, number = symbol.partition("@")[2].lstrip("@").rpartition("_")
        if family in limits and numbers(number) > numbers(limits[family]):
            yield f"{symbol} is newer than {family}_{limits[family]}"


def numbers(version):
    return [int(part) for part in version.split(".")]


def foreign_exports(name, exports):
    """What a library shows that isn't the project's. The version script of libkrt.so keeps templates of others inside."""
    for kind, symbol in exports:
        if (name == "libkrt.so" and FOREIGN.search(symbol)
                or name == "libnativevrl.so" and not EXPORTS_OF_LIBRARY.search(symbol)
                or name == "libloomkit.so" and symbol not in ("JNI_OnLoad", "JNI_OnUnload")):
            yield symbol


def faults_of_symbols(path, options):
    imports = {symbol.partition("@")[0] for _, symbol in symbols(path, "--undefined-only")}
    exports = [(kind, symbol.partition("@")[0]) for kind, symbol in symbols(path, "--defined-only")]
    name = Path(path).name
    if options.guarded and name != "libloomkit.so" and "__stack_chk_fail" not in imports:
        yield "no stack protector"
    for symbol in foreign_exports(name, exports):
        yield f"exports {symbol}"
    for symbol in (symbol for kind, symbol in exports if kind == "u" and name != "libkrt.so"):
        yield f"shares {symbol} with its copies"
    if name == "libkrt.so":
        if options.fortified and not any(re.match(r"__\w+_chk$", symbol) for symbol in imports - {"__stack_chk_fail"}):
            yield "no bounds are checked in calls of the C library"
        if ("A", "KRT_1") not in exports:
            yield "its symbols have no version"


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
    parser = argparse.ArgumentParser()
    for option in ("--guarded", "--fortified", "--marked"):
        parser.add_argument(option, action="store_true")
    parser.add_argument("--oldest", nargs="+", default=[], metavar="VERSION")
    parser.add_argument("files", nargs="+", metavar="FILE")
    options = parser.parse_intermixed_args()
    count = 0
    for path in options.files:
        faults = [*faults_of_header(path), *faults_of_needs(path, options.oldest), *faults_of_symbols(path, options)]
        if options.marked and Path(path).name != "kpa":
            faults += faults_of_code(path)
        for fault in faults:
            print(f"{path}: {fault}")
        count += len(faults)
    print(f"{len(options.files)} files, {count} faults")
    return 1 if count else 0


sys.exit(main())
