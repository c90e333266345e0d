package com.norvane.toolbox.loomkit;

import static java.util.Map.entry;

import com.norvane.extern.java.NVCellArray;
import com.norvane.extern.java.NVStructArray;
import java.util.Map;

/** Which class of array Java data becomes, as native code decides it. */
final class Classification {
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

    private Classification() {}

    /** The class that native code gives to data, or null when it takes the data for no array at all. */
    static ClassId of(Object data) {
        if (data == null) {
            return ClassId.DOUBLE;
        }
        if (data instanceof NVStructArray) {
            return ClassId.STRUCT;
        }
        if (data instanceof NVCellArray) {
            return ClassId.CELL;
        }
        return ofNested(data);
    }

    /**
     * The first element alone decides, however deep it lies. Where it is missing, the type of the array that lacks it
     * decides; a null in an array of no stated type makes text.
     */
    static ClassId ofNested(Object data) {
        Object element = data;
        ClassId stated = null;
        for (int depth = 0; element instanceof Object[]; depth++) {
            Dimensions.checkLevel(depth);
            Object[] array = (Object[]) element;
            stated = CLASS_OF_LEAF.get(leafType(array.getClass()));
            if (array.length == 0) {
                return stated;
            }
            element = array[0];
        }
        if (element == null) {
            return stated == null ? ClassId.CHAR : stated;
        }
        return CLASS_OF_LEAF.get(leafType(element.getClass()));
    }

    static Class<?> leafType(Class<?> type) {
        Class<?> leaf = type;
        while (leaf.isArray()) {
            leaf = leaf.getComponentType();
        }
        return leaf;
    }
}
