"""Reads the serialised form of every sample array with cbor2 and compares it with what the sample says.

Usage: read_serial_samples.py PROGRAM, where PROGRAM FOLDER writes NAME.cbor and NAME.json into FOLDER.
"""

import json
import math
import pathlib
import struct
import subprocess
import sys
import tempfile

import cbor2

# Typed-array tag: struct format of one little-endian element.
ELEMENT_FORMATS = {64: "B", 69: "H", 70: "I", 71: "Q", 72: "b", 77: "h", 78: "i", 79: "q", 85: "f", 86: "d"}
# Class number: typed-array tag of its elements.
CLASS_TAGS = {3: 64, 4: 69, 6: 86, 7: 85, 8: 72, 9: 64, 10: 77, 11: 69, 12: 78, 13: 70, 14: 79, 15: 71}
INDEX_TAG = 70
VERSION = 1


def elements(tagged, tag):
    assert isinstance(tagged, cbor2.CBORTag), f"typed array expected, not {tagged!r}"
    assert tagged.tag == tag, f"tag {tagged.tag} in place of {tag}"
    return [as_json(value) for (value,) in struct.iter_unpack("<" + ELEMENT_FORMATS[tag], tagged.value)]


def as_json(value):
    if isinstance(value, float) and math.isinf(value):
        return "Infinity" if value > 0 else "-Infinity"
    return value


def array(item):
    """One array of the serialised form as the dictionary that the sample's JSON holds."""
    if item is None:
        return None
    class_number, extents, *rest = item
    result = {"class": class_number, "extents": extents}
    if class_number == 2:
        names, *rest = rest
        result["fields"] = [list(name) if isinstance(name, bytes) else name for name in names]
    if class_number in (1, 2, 16):
        (slots,) = rest
        result["slots"] = [array(slot) for slot in slots]
    elif class_number != 0:
        if len(rest) > 2:
            starts, rows, *rest = rest
            result["columnStart"] = elements(starts, INDEX_TAG)
            result["rowIndex"] = elements(rows, INDEX_TAG)
        for part, typed in zip(("real", "imag"), rest, strict=False):
            result[part] = elements(typed, CLASS_TAGS[class_number])
    return result


def check(form, expected):
    decoded = cbor2.loads(form)
    version, item = decoded
    assert version == VERSION, f"version {version}"
    found = array(item)
    assert found == expected, f"found {found}\nin place of {expected}"
    assert cbor2.dumps(decoded, canonical=True) == form, "not the deterministic encoding"


def main(program):
    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([program, folder], check=True)
        forms = sorted(pathlib.Path(folder).glob("*.cbor"))
        for path in forms:
            try:
                check(path.read_bytes(), json.loads(path.with_suffix(".json").read_text(encoding="utf-8")))
            except AssertionError as error:
                failures += 1
                print(f"{path.stem}: {error}")
        print(f"{len(forms)} samples, {failures} failures")
        return 0 if forms and failures == 0 else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
