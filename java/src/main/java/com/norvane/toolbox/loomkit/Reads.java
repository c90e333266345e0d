package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;
import java.util.Map;
import java.util.Objects;

/** The whole-array reads, by the Java type of an element. */
final class Reads {
    /** Reads one part of an array: the real one when the flag is true. */
    private interface Read {
        Object of(NativePtr array, boolean real);
    }

    private static final Map<Class<?>, Read> NESTED =
            Map.ofEntries(
                    Map.entry(double.class, NVKRT::qxArrayToDoubleArray),
                    Map.entry(float.class, NVKRT::qxArrayToFloatArray),
                    Map.entry(long.class, NVKRT::qxArrayToLongArray),
                    Map.entry(int.class, NVKRT::qxArrayToIntArray),
                    Map.entry(short.class, NVKRT::qxArrayToShortArray),
                    Map.entry(byte.class, NVKRT::qxArrayToByteArray),
                    Map.entry(char.class, NVKRT::qxArrayToCharArray),
                    Map.entry(Double.class, NVKRT::qxArrayToDoubleObjectArray),
                    Map.entry(Float.class, NVKRT::qxArrayToFloatObjectArray),
                    Map.entry(Long.class, NVKRT::qxArrayToLongObjectArray),
                    Map.entry(Integer.class, NVKRT::qxArrayToIntegerObjectArray),
                    Map.entry(Short.class, NVKRT::qxArrayToShortObjectArray),
                    Map.entry(Byte.class, NVKRT::qxArrayToByteObjectArray),
                    Map.entry(Character.class, NVKRT::qxArrayToCharacterObjectArray));

    private static final Map<Class<?>, Read> FLAT =
            Map.of(
                    double[].class, NVKRT::qxGetDoubleData,
                    float[].class, NVKRT::qxGetFloatData,
                    long[].class, NVKRT::qxGetLongData,
                    int[].class, NVKRT::qxGetIntData,
                    short[].class, NVKRT::qxGetShortData,
                    byte[].class, NVKRT::qxGetByteData,
                    char[].class, NVKRT::qxGetCharData);

    private Reads() {}

    /** A nested array of a type whose depth is the number of dimensions. */
    static <A> A nested(NVBuiltinArray array, Class<A> type, boolean real) {
        Read read = NESTED.get(Classification.leafType(Objects.requireNonNull(type, "type")));
        if (read == null) {
            throw new IllegalArgumentException("a numeric array can't be read as " + type.getTypeName());
        }
        checkDepth(array, type);
        return type.cast(shown(array, read, real));
    }

    /** A nested array of the type that is closest to the class of the array. */
    static Object natural(NVBuiltinArray array, boolean real) {
        return shown(array, NVKRT::qxArray2ObjectArray, real);
    }

    private static Object shown(NVBuiltinArray array, Read read, boolean real) {
        return array.read(
                pointer -> {
                    Dimensions.checkShowable(NVKRT.qxGetDimensions(pointer));
                    return read.of(pointer, real);
                });
    }

    /** A one-level array of the stored elements in storage order. */
    static <A> A flat(NVBuiltinArray array, Class<A> type, boolean real) {
        Read read = FLAT.get(Objects.requireNonNull(type, "type"));
        if (read == null) {
            throw new IllegalArgumentException("the elements can't be read as " + type.getTypeName());
        }
        return type.cast(array.read(pointer -> read.of(pointer, real)));
    }

    /**
     * @throws UnsupportedOperationException for an array that no type could show
     * @throws IllegalArgumentException for a type with another number of levels
     */
    static void checkDepth(NVBuiltinArray array, Class<?> type) {
        int depth = 0;
        for (Class<?> level = type; level.isArray(); level = level.getComponentType()) {
            depth++;
        }
        int[] extents = array.dimensions();
        Dimensions.checkShowable(extents);
        int dimensions = extents.length;
        if (depth != dimensions) {
            throw new IllegalArgumentException(
                    type.getTypeName() + " has " + depth + " levels, but the array has " + dimensions + " dimensions");
        }
    }
}
