package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;

/** How deeply cells and structs are nested, which the native code that walks them has to be spared. */
final class Nesting {
    private Nesting() {}

    /** An upper bound on how deeply cells and structs are nested in an array; 0 for other classes. */
    static int levels(NVBuiltinArray array) {
        if (!array.classId().isCompound()) {
            return 0;
        }
        int known = array.levelsIfStated();
        if (known >= 0) {
            return known;
        }
        int measured = array.read(pointer -> measureLevels(array, ValueTree.MAX_LEVELS + 1));
        if (array.depth() == 0) {
            array.stateLevels(measured);
        }
        return measured;
    }

    /** At most {@code limit}. Called with the monitor of the array's tree held. */
    private static int measureLevels(NVBuiltinArray array, int limit) {
        if (!array.classId().isCompound() || limit == 0) {
            return 0;
        }
        int slots = array.numberOfElements();
        if (array.classId() == ClassId.STRUCT) {
            slots *= array.read(NVKRT::qxGetNumberOfFields);
        }
        int deepest = 0;
        for (int slot = 0; slot < slots; slot++) {
            try (NVArray element = elementAt(array, slot)) {
                if (element instanceof NVBuiltinArray) {
                    deepest = Math.max(deepest, measureLevels((NVBuiltinArray) element, limit - 1));
                }
            }
        }
        return deepest + 1;
    }

    /**
     * The array in a slot, for a short look with the monitor of the parent's tree held.
     *
     * @param slot zero-based
     */
    static NVArray elementAt(NVBuiltinArray parent, int slot) {
        return (NVArray) parent.read(pointer -> NVKRT.qxGetCell(pointer, slot));
    }
}
