package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;

/**
 * How large the serialised form of an array would be, and why it can't have one. Asked when there was none, since it
 * looks at every array in a cell or struct.
 */
final class FormSize {
    private static final long MOST_BYTES = Integer.MAX_VALUE;

    /** Cells and structs, and what the innermost of them holds; the name of a function handle is not counted. */
    private static final int MOST_LEVELS = ValueTree.MAX_LEVELS + 1;

    private static final int TAG = 2;

    private final ClassId classId;
    private String obstacle;
    private long bytes;

    private FormSize(ClassId classId) {
        this.classId = classId;
    }

    static FormSize of(NVBuiltinArray array) {
        FormSize size = new FormSize(array.classId());
        size.bytes = 2;
        array.read(
                pointer -> {
                    size.add(array, 1);
                    return null;
                });
        return size;
    }

    /** A lower bound, which falls short by the bytes of lengthy field names and of slots that hold nothing at most. */
    long bytes() {
        return bytes;
    }

    /** Why the array can't have a form, or null when it can. */
    String refusal() {
        if (obstacle != null) {
            return "this array of class " + classId + " can't be serialised: it " + obstacle;
        }
        return bytes <= MOST_BYTES
                ? null
                : "this array of class " + classId + " is too large to be serialised: its form takes " + bytes
                        + " bytes, and a Java array holds at most " + MOST_BYTES;
    }

    private void add(NVBuiltinArray array, int level) {
        if (level > MOST_LEVELS) {
            obstacle = "is nested more than " + ValueTree.MAX_LEVELS + " levels deep";
        }
        if (array.classId() == ClassId.OPAQUE || array.classId() == ClassId.OBJECT) {
            obstacle = "is a value that only native code can look into";
        }
        if (isDecided()) {
            return;
        }
        int[] extents = array.dimensions();
        bytes += 2 + head(extents.length);
        long count = 1;
        for (int extent : extents) {
            bytes += head(extent);
            count *= extent;
        }
        if (array.classId().hasSlots()) {
            addSlots(array, count, level);
        } else if (array.isSparse()) {
            addBlock((extents[1] + 1L) * Integer.BYTES);
            addBlock((long) array.numberOfNonZeros() * Integer.BYTES);
            addParts(array, array.numberOfNonZeros());
        } else {
            addParts(array, count);
        }
    }

    private void addParts(NVBuiltinArray array, long count) {
        for (int part = array.isComplex() ? 2 : 1; part > 0; part--) {
            addBlock(count * array.classId().elementBytes());
        }
    }

    private void addBlock(long size) {
        bytes += TAG + head(size) + size;
    }

    private void addSlots(NVBuiltinArray array, long elements, int level) {
        long slots = elements;
        if (array.classId() == ClassId.STRUCT) {
            String[] names = array.read(NVKRT::qxGetFieldNames);
            bytes += head(names.length);
            for (String name : names) {
                bytes += head(name.length()) + name.length();
            }
            slots *= names.length;
        }
        bytes += head(slots);
        for (int slot = 0; slot < slots && !isDecided(); slot++) {
            addSlot(array, slot, level);
        }
    }

    private void addSlot(NVBuiltinArray array, int slot, int level) {
        try (NVArray element = Nesting.elementAt(array, slot)) {
            if (element instanceof NVBuiltinArray) {
                add((NVBuiltinArray) element, array.classId().isCompound() ? level + 1 : level);
            } else {
                obstacle = "holds a Java object";
            }
        }
    }

    private boolean isDecided() {
        return obstacle != null || bytes > MOST_BYTES;
    }

    /** The bytes that a count takes. */
    private static int head(long count) {
        return count < 24 ? 1 : count < 1 << 8 ? 2 : count < 1 << 16 ? 3 : count < 1L << 32 ? 5 : 9;
    }
}
