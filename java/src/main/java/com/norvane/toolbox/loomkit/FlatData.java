package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import java.lang.reflect.Array;
import java.util.Objects;
import java.util.Set;

/**
 * Data in storage order for one part of an array. Native code copies it without a look at the elements beyond the
 * first, so all of them are looked at here.
 */
final class FlatData {
    private static final Set<Class<?>> NUMBERS =
            Set.of(byte[].class, short[].class, int[].class, long[].class, float[].class, double[].class);

    private FlatData() {}

    /**
     * @param count elements that are needed, no more and no fewer
     * @return what native code can be given
     * @throws IllegalArgumentException for data of another type or length
     */
    static Object checked(Object data, ClassId target, int count) {
        Objects.requireNonNull(data, "data");
        Object copy = data instanceof Object[] ? ((Object[]) data).clone() : data;
        if (!accepts(target, copy)) {
            throw new IllegalArgumentException(
                    "data of type " + data.getClass().getTypeName() + " does not fit an array of class " + target);
        }
        int length = copy instanceof String ? ((String) copy).length() : Array.getLength(copy);
        if (length != count) {
            throw new IllegalArgumentException(
                    "the data has " + length + " elements where the array has " + count);
        }
        return copy;
    }

    /**
     * A dense array from elements in storage order.
     *
     * @param imaginary null for a real array
     * @throws IllegalArgumentException for extents that make no array, or data of another type or length
     */
    static NVBuiltinArray make(int[] dimensions, ClassId classId, Object real, Object imaginary) {
        int[] extents = Dimensions.checked(dimensions);
        int count = Dimensions.count(extents);
        Object realData = checked(real, classId, count);
        Object imaginaryData = imaginary == null ? null : checked(imaginary, classId, count);
        Complexity complexity = imaginary == null ? Complexity.REAL : Complexity.COMPLEX;
        return Wrappers.made(
                NVKRT.qxCreateNumericArray(extents, realData, imaginaryData, classId.code(), complexity.code()));
    }

    /** Stores one part of all elements, of a sparse array that of all stored ones. */
    static void store(NVBuiltinArray array, Object flat, boolean real) {
        array.write(
                pointer -> {
                    int count = NVKRT.qxGetNumberOfNonZeros(pointer);
                    NVKRT.qxSetData(pointer, checked(flat, array.classId(), count), real);
                });
    }

    private static boolean accepts(ClassId target, Object data) {
        switch (target) {
            case LOGICAL:
                return data instanceof boolean[] || holdsOnly(data, Boolean.class);
            case CHAR:
                return data instanceof char[] || data instanceof String || holdsOnly(data, Character.class);
            default:
                return target.isNumeric() && (NUMBERS.contains(data.getClass()) || holdsOnly(data, Number.class));
        }
    }

    private static boolean holdsOnly(Object data, Class<?> type) {
        if (!(data instanceof Object[])) {
            return false;
        }
        for (Object element : (Object[]) data) {
            if (!type.isInstance(element)) {
                return false;
            }
        }
        return true;
    }
}
