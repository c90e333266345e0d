package com.norvane.toolbox.loomkit;

import com.norvane.extern.java.NVCellArray;
import com.norvane.extern.java.NVStructArray;
import com.norvane.toolbox.loomkit.internal.NVKRT;
import java.util.Arrays;
import java.util.Map;
import java.util.Objects;

/**
 * Copies nested Java arrays down to their primitive rows, which keep their length, and measures the bounding box of
 * what it copies, as native code will: level 0 is the outermost array.
 *
 * <p>Where the data is going to be text, an object is replaced by its text: native code would ask for it twice.
 */
final class NestedCopy {
    /** More units than any primitive value needs as text. */
    private static final int TEXT_OF_PRIMITIVE = 26;

    private static final Map<Class<?>, Object> ZEROS =
            Map.of(
                    Boolean.class, false,
                    Character.class, '\0',
                    Double.class, 0.0,
                    Float.class, 0.0f,
                    Byte.class, (byte) 0,
                    Short.class, (short) 0,
                    Integer.class, 0,
                    Long.class, 0L);

    private final boolean asText;
    private long[] extents = new long[4];
    private int levels;

    /** For data whose class follows from its first element, or from its type where that is missing. */
    NestedCopy(Object data) {
        this(Classification.ofNested(data) == ClassId.CHAR);
    }

    NestedCopy(boolean asText) {
        this.asText = asText;
    }

    /** May be called for the real and the imaginary part in turn: the bounding box is that of both. */
    Object copy(Object data) {
        return copy(data, 0);
    }

    /** A real array of that class from nested data, not null. */
    static NVBuiltinArray make(Object data, ClassId classId) {
        Object copy = new NestedCopy(classId == ClassId.CHAR).copy(data);
        return Wrappers.made(NVKRT.qxObject2qxArray(copy, null, classId.code(), Complexity.REAL.code()));
    }

    private Object copy(Object data, int level) {
        if (data instanceof Object[]) {
            return copyArray((Object[]) data, level);
        }
        if (data == null) {
            return null;
        }
        if (data.getClass().isArray()) {
            raise(level, java.lang.reflect.Array.getLength(data));
            if (asText && !(data instanceof char[])) {
                raise(level + 1, TEXT_OF_PRIMITIVE);
            }
            return data;
        }
        if (asText && !(data instanceof Character)) {
            String text = Objects.toString(data.toString(), "");
            raise(level, text.length());
            return text;
        }
        if (data instanceof NVCellArray) {
            raiseAll(level, ((NVCellArray) data).getDimensions());
        } else if (data instanceof NVStructArray) {
            raiseAll(level, ((NVStructArray) data).getDimensions());
        }
        return data;
    }

    private Object copyArray(Object[] array, int level) {
        Dimensions.checkLevel(level);
        raise(level, array.length);
        if (array.length == 0) {
            return array;
        }
        Object[] copy = asText ? Arrays.copyOf(array, array.length, Object[].class) : array.clone();
        Object missing = asText ? null : neutralOf(array.getClass().getComponentType());
        for (int i = 0; i < copy.length; i++) {
            copy[i] = copy[i] == null ? missing : copy(copy[i], level + 1);
        }
        return copy;
    }

    /** What stands for a null in an array of that type, so that a null in front leaves native code the class. */
    private static Object neutralOf(Class<?> type) {
        if (type.isArray()) {
            return java.lang.reflect.Array.newInstance(type.getComponentType(), 0);
        }
        return ZEROS.get(type);
    }

    private void raiseAll(int level, int[] lengths) {
        for (int i = 0; i < lengths.length; i++) {
            raise(level + i, lengths[i]);
        }
    }

    private void raise(int level, int length) {
        Dimensions.checkLevel(level);
        if (level >= extents.length) {
            extents = Arrays.copyOf(extents, level * 2);
        }
        boolean grown = length > extents[level];
        extents[level] = Math.max(extents[level], length);
        levels = Math.max(levels, level + 1);
        if (grown) {
            Dimensions.checkCount(extents, levels);
        }
    }
}
