package com.norvane.toolbox.loomkit;

import com.norvane.extern.java.NVCellArray;
import com.norvane.extern.java.NVStructArray;
import java.util.ArrayList;
import java.util.IdentityHashMap;
import java.util.List;
import java.util.Map;

/**
 * Java data that is about to become a native array: checked, and copied where another thread could still change what
 * was checked. Native code neither guards against data that contains itself nor against sizes beyond 32 bits.
 */
final class JavaData implements AutoCloseable {
    /** How often the parts of a cell or struct may be shared on average, unless it is small all the same. */
    private static final long MAX_SHARING = 8;

    private static final long SMALL = 1 << 20;

    private final Object value;
    private final int levels;
    private final List<NVBuiltinArray> copies;

    private JavaData(Copied whole, List<NVBuiltinArray> copies) {
        value = whole.value;
        levels = whole.levels;
        this.copies = copies;
    }

    /**
     * @param data of a class that {@link Classification#of} knows
     * @throws IllegalArgumentException for data that is nested too deeply, contains itself, is too large, or has cells
     *     or fields that are no plain data
     */
    static JavaData of(Object data) {
        Copier copier = new Copier();
        try {
            return new JavaData(copier.copyWhole(data), copier.copies);
        } catch (RuntimeException | Error failure) {
            copier.copies.forEach(NVBuiltinArray::close);
            throw failure;
        }
    }

    /** Ends what was copied for native code. Called when that has read the value. */
    @Override
    public void close() {
        copies.forEach(NVBuiltinArray::close);
    }

    /** What native code is to be given before {@link #close}. */
    Object value() {
        return value;
    }

    /** How deeply cells and structs are nested in it; 0 when it is neither. */
    int levels() {
        return levels;
    }

    /** A copy of a cell or struct, how deeply it is nested, and how many slots it has when written out. */
    private static final class Copied {
        private final Object value;
        private final int levels;
        private final long slots;

        Copied(Object value, int levels, long slots) {
            this.value = value;
            this.levels = levels;
            this.slots = slots;
        }
    }

    /** Copies values of cells and structs, which may hold cells and structs again, each of them once. */
    private static final class Copier {
        private final Map<Object, Copied> seen = new IdentityHashMap<>();
        private final List<NVBuiltinArray> copies = new ArrayList<>();
        private long distinctSlots;

        /** Native code writes shared parts out wherever they stand. */
        Copied copyWhole(Object data) {
            Copied copied = copy(data, 0);
            ValueTree.checkLevels(copied.levels);
            if (copied.slots > Math.max(SMALL, MAX_SHARING * distinctSlots)) {
                throw new IllegalArgumentException(
                        "the data shares parts with itself, and has " + copied.slots + " cells and fields in all");
            }
            return copied;
        }

        /** {@code depth} counts the cells and structs around the data. */
        private Copied copy(Object data, int depth) {
            Copied known = seen.get(data);
            if (known != null) {
                return known;
            }
            if (data instanceof NVCellArray) {
                return copyAll(data, ((NVCellArray) data).getFlatArray(), depth + 1);
            }
            if (data instanceof NVStructArray) {
                return copyAll(data, ((NVStructArray) data).getFlatArray(), depth + 1);
            }
            if (data instanceof NVBuiltinArray && depth == 0) {
                return copyArray((NVBuiltinArray) data);
            }
            if (data instanceof NVBuiltinArray) {
                throw new IllegalArgumentException(
                        "an " + data.getClass().getSimpleName() + " can't be put into a pure Java cell or struct");
            }
            if (Classification.of(data) == null) {
                throw new IllegalArgumentException(
                        "a " + data.getClass().getTypeName() + " can't be put into a cell or struct");
            }
            return new Copied(data == null ? null : new NestedCopy(data).copy(data), 0, 0);
        }

        /** The copy is nobody else's to close, change or nest while native code reads it. */
        private Copied copyArray(NVBuiltinArray array) {
            int levels = Nesting.levels(array);
            ValueTree.checkLevels(levels);
            NVBuiltinArray copy = array.duplicate();
            copies.add(copy);
            Copied copied = new Copied(copy, levels, 0);
            seen.put(array, copied);
            return copied;
        }

        private Copied copyAll(Object parent, Object[] values, int depth) {
            ValueTree.checkLevels(depth);
            distinctSlots += values.length;
            int levels = 0;
            long slots = values.length;
            for (int i = 0; i < values.length; i++) {
                Copied copied = copy(values[i], depth);
                values[i] = copied.value;
                levels = Math.max(levels, copied.levels);
                slots = Math.min(slots + copied.slots, Long.MAX_VALUE / 2);
            }
            Copied whole = new Copied(remade(parent, values), levels + 1, slots);
            seen.put(parent, whole);
            return whole;
        }

        private static Object remade(Object parent, Object[] values) {
            if (parent instanceof NVCellArray) {
                return new NVCellArray(((NVCellArray) parent).getDimensions(), values);
            }
            NVStructArray struct = (NVStructArray) parent;
            return new NVStructArray(struct.getDimensions(), struct.fieldNames(), values);
        }
    }
}
