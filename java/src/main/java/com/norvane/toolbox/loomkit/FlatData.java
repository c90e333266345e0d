package com.norvane.toolbox.loomkit;

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
