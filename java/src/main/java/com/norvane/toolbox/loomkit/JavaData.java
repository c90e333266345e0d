package com.norvane.toolbox.loomkit;

import static java.util.Map.entry;

import com.norvane.extern.java.NVCellArray;
import com.norvane.extern.java.NVStructArray;
import java.util.Map;

/**
 * Java data that is about to become a native array: checked, and copied where another thread could still change what
 * was checked. Native code neither guards against data that contains itself nor against sizes beyond 32 bits.
 */
final class JavaData {
    private static final Map<Class<?>, ClassId> CLASS_OF_LEAF =
            Map.ofEntries(
                    entry(boolean.class, ClassId.LOGICAL),
                    entry(Boolean.class, ClassId.LOGICAL),
                    entry(char.class, ClassId.CHAR),
                    entry(Character.class, ClassId.CHAR),
                    entry(String.class, ClassId.CHAR),
                    entry(double.class, ClassId.DOUBLE),
                    entry(Double.class, ClassId.DOUBLE),
                    entry(float.class, ClassId.SINGLE),
                    entry(Float.class, ClassId.SINGLE),
                    entry(byte.class, ClassId.INT8),
                    entry(Byte.class, ClassId.INT8),
                    entry(short.class, ClassId.INT16),
                    entry(Short.class, ClassId.INT16),
                    entry(int.class, ClassId.INT32),
                    entry(Integer.class, ClassId.INT32),
                    entry(long.class, ClassId.INT64),
                    entry(Long.class, ClassId.INT64));

    /** No process can hold that many native arrays; data that shares parts with itself may ask for more. */
    private static final int MAX_SLOTS = 1 << 26;

    private final Object value;
    private final int levels;

    private JavaData(Object value, int levels) {
        this.value = value;
        this.levels = levels;
    }

    /**
     * @throws IllegalArgumentException for data that is nested too deeply, contains itself, or is too large
     */
    static JavaData of(Object data) {
        Copier copier = new Copier();
        Object copy = copier.copy(data, 0);
        return new JavaData(copy, copier.levels);
    }

    /** What native code is to be given. */
    Object value() {
        return value;
    }

    /** How deeply cells and structs are nested in it; 0 when it is neither. */
    int levels() {
        return levels;
    }

    /** The class that native code gives to data, or null when it takes the data for no array at all. */
    static ClassId classify(Object data) {
        if (data == null) {
            return ClassId.DOUBLE;
        }
        if (data instanceof NVStructArray) {
            return ClassId.STRUCT;
        }
        if (data instanceof NVCellArray) {
            return ClassId.CELL;
        }
        return classifyNested(data);
    }

    /** The first element alone decides, however deep it lies; a null there makes text. */
    static ClassId classifyNested(Object data) {
        Object element = data;
        for (int depth = 0; element instanceof Object[]; depth++) {
            NestedCopy.checkDepth(depth);
            Object[] array = (Object[]) element;
            if (array.length == 0) {
                return CLASS_OF_LEAF.get(leafType(array.getClass()));
            }
            element = array[0];
        }
        return element == null ? ClassId.CHAR : CLASS_OF_LEAF.get(leafType(element.getClass()));
    }

    static Class<?> leafType(Class<?> type) {
        Class<?> leaf = type;
        while (leaf.isArray()) {
            leaf = leaf.getComponentType();
        }
        return leaf;
    }

    /** Copies values of cells and structs, which may hold cells and structs again. */
    private static final class Copier {
        private int levels;
        private int slots;

        Object copy(Object data, int depth) {
            if (data instanceof NVCellArray) {
                NVCellArray cell = (NVCellArray) data;
                return new NVCellArray(cell.getDimensions(), copyAll(cell.getFlatArray(), depth + 1));
            }
            if (data instanceof NVStructArray) {
                NVStructArray struct = (NVStructArray) data;
                Object[] values = copyAll(struct.getFlatArray(), depth + 1);
                return new NVStructArray(struct.getDimensions(), struct.fieldNames(), values);
            }
            return data == null || data instanceof NVArray ? data : new NestedCopy(data).copy(data);
        }

        private Object[] copyAll(Object[] values, int depth) {
            ValueTree.checkLevels(depth);
            levels = Math.max(levels, depth);
            slots += values.length;
            if (slots < 0 || slots > MAX_SLOTS) {
                throw new IllegalArgumentException("the data has more than " + MAX_SLOTS + " cells and fields");
            }
            Object[] copies = new Object[values.length];
            for (int i = 0; i < values.length; i++) {
                copies[i] = copy(values[i], depth);
            }
            return copies;
        }
    }
}
