package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.params.provider.Arguments.arguments;

import java.lang.reflect.Array;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Random;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.EnumSource;
import org.junit.jupiter.params.provider.MethodSource;

class NumericArrayTest {
    /** The value that a class keeps of a small whole number. */
    private static double kept(ClassId classId, int value) {
        switch (classId) {
            case UINT8:
                return value & 0xFF;
            case UINT16:
                return value & 0xFFFF;
            case UINT32:
                return value & 0xFFFFFFFFL;
            case INT8:
                return (byte) value;
            default:
                return value;
        }
    }

    @ParameterizedTest
    @EnumSource(
            value = ClassId.class,
            names = {"DOUBLE", "SINGLE", "INT8", "UINT8", "INT16", "UINT16", "INT32", "UINT32", "INT64"})
    void readsBackWhatWasStoredInEveryClass(ClassId classId) {
        long seed = 20240607 + classId.ordinal();
        Random random = new Random(seed);
        int[] extents = {1 + random.nextInt(5), 1 + random.nextInt(5), 1 + random.nextInt(4)};
        int count = Dimensions.count(extents);
        int[] values = random.ints(count, -200, 200).toArray();
        double[] expected = Arrays.stream(values).mapToDouble(value -> kept(classId, value)).toArray();

        try (NVNumericArray array = NVNumericArray.ofFlat(extents, classId, values, null)) {
            assertArrayEquals(expected, array.toFlatDoubleArray(), "seed " + seed);
            double[][][] nested = array.toArray(double[][][].class);
            for (int index = 0; index < count; index++) {
                int i = index % extents[0];
                int j = index / extents[0] % extents[1];
                int k = index / extents[0] / extents[1];
                assertEquals(expected[index], nested[i][j][k], "seed " + seed);
                assertEquals(expected[index], array.getDouble(i + 1, j + 1, k + 1), "seed " + seed);
                assertEquals(expected[index], array.getDoubleAt(index), "seed " + seed);
                assertEquals((long) expected[index], array.getLongAt(index), "seed " + seed);
                assertEquals((float) expected[index], array.getFloatAt(index), "seed " + seed);
                assertEquals((int) (long) expected[index], array.getIntAt(index), "seed " + seed);
                assertEquals((short) (long) expected[index], array.getShort(i + 1, j + 1, k + 1), "seed " + seed);
                assertEquals((byte) (long) expected[index], array.getByteAt(index), "seed " + seed);
                assertEquals(index, array.indexOf(i + 1, j + 1, k + 1));
            }
            assertEquals(classId, array.classId());
        }
    }

    static Stream<Arguments> madeFromJavaData() {
        return Stream.of(
                arguments(3, "INT32", new int[] {1, 1}, new double[] {3}),
                arguments(new double[] {1, 2}, "DOUBLE", new int[] {1, 2}, new double[] {1, 2}),
                arguments(new double[][] {{1, 2, 3}, {4, 5, 6}}, "DOUBLE", new int[] {2, 3},
                        new double[] {1, 4, 2, 5, 3, 6}),
                arguments(new double[][] {{1}, {2, 3}}, "DOUBLE", new int[] {2, 2}, new double[] {1, 2, 0, 3}),
                arguments(new double[][] {null, {1, 2}}, "DOUBLE", new int[] {2, 2}, new double[] {0, 1, 0, 2}),
                arguments(new Short[][] {{1, null}}, "INT16", new int[] {1, 2}, new double[] {1, 0}),
                arguments(new Object[] {1.0, new double[] {2, 3}}, "DOUBLE", new int[] {2, 2},
                        new double[] {1, 2, 0, 3}),
                arguments(new float[2][0], "SINGLE", new int[] {2, 0}, new double[0]),
                arguments(new long[0], "INT64", new int[] {1, 0}, new double[0]),
                arguments(new byte[][][] {{{1, 2}}, {{3, 4}}}, "INT8", new int[] {2, 1, 2},
                        new double[] {1, 3, 2, 4}));
    }

    @ParameterizedTest
    @MethodSource("madeFromJavaData")
    void takesClassAndShapeFromTheData(Object data, ClassId classId, int[] extents, double[] flat) {
        try (NVNumericArray array = NVNumericArray.of(data)) {
            assertEquals(classId, array.classId());
            assertArrayEquals(extents, array.dimensions());
            assertArrayEquals(flat, array.toFlatDoubleArray());
        }
    }

    static Stream<Class<?>> nestedTypes() {
        return Stream.of(
                double[][].class, float[][].class, long[][].class, int[][].class, short[][].class, byte[][].class,
                char[][].class, Double[][].class, Float[][].class, Long[][].class, Integer[][].class,
                Short[][].class, Byte[][].class, Character[][].class);
    }

    @ParameterizedTest
    @MethodSource("nestedTypes")
    void readsRowsInEveryType(Class<?> type) {
        try (NVNumericArray array = NVNumericArray.of(new int[][] {{1, 2, 3}, {4, 5, 6}})) {
            Object rows = array.toArray(type);
            List<Integer> read = new ArrayList<>();
            for (int i = 0; i < Array.getLength(rows); i++) {
                Object row = Array.get(rows, i);
                for (int j = 0; j < Array.getLength(row); j++) {
                    Object value = Array.get(row, j);
                    read.add(value instanceof Character ? (Character) value : ((Number) value).intValue());
                }
            }
            assertEquals(List.of(1, 2, 3, 4, 5, 6), read);
        }
    }

    @Test
    void shapesEmptyMatricesByTheirExtents() {
        try (NVNumericArray none = NVNumericArray.zeros();
                NVNumericArray noColumns = NVNumericArray.zeros(3, 0);
                NVNumericArray noRows = NVNumericArray.zeros(0, 3)) {
            assertEquals(0, none.toDoubleArray().length);
            assertArrayEquals(new double[3][0], noColumns.toDoubleArray());
            assertEquals(0, noRows.toDoubleArray().length);
            assertEquals(0, noRows.toFlatDoubleArray().length);
        }
    }

    @Test
    void keepsRealAndImaginaryPartsApart() {
        double[][] real = {{1, 2}, {3, 4}};
        double[][] imaginary = {{-1}};
        try (NVNumericArray array = NVNumericArray.complex(real, imaginary)) {
            assertEquals(Complexity.COMPLEX, array.complexity());
            assertArrayEquals(real, array.toDoubleArray());
            assertArrayEquals(new double[][] {{-1, 0}, {0, 0}}, array.toImaginaryDoubleArray());

            array.setImaginary(7, 2, 1);
            array.setImaginaryAt(3, 8);
            assertEquals(7, array.getImaginary(2, 1));
            assertEquals(8, array.getImaginaryAt(3));
            assertArrayEquals(real, array.toDoubleArray());

            assertArrayEquals(new double[][] {{-1, 0}, {7, 8}}, (double[][]) array.toImaginaryObject());

            array.setImaginaryData(new Integer[] {1, 2, 3, 4});
            assertArrayEquals(new double[] {1, 2, 3, 4}, array.toFlatImaginaryDoubleArray());
        }
    }

    @Test
    void keepsAllBitsOfImaginaryIntegers() {
        long bits = (1L << 60) + 1;
        try (NVNumericArray wide = NVNumericArray.zeros(ClassId.INT64, Complexity.COMPLEX, 1, 2);
                NVNumericArray small = NVNumericArray.zeros(ClassId.UINT8, Complexity.COMPLEX, 1, 1)) {
            wide.setImaginary(bits, 1, 1);
            wide.setImaginaryAt(1, -bits);
            assertEquals(bits, wide.getImaginaryLongAt(0));
            assertEquals(-bits, wide.getImaginaryLong(1, 2));
            small.setImaginaryAt(0, 200L);
            assertEquals(200, small.getImaginary(1, 1));
        }
    }

    static Stream<Arguments> stores() {
        return Stream.of(
                arguments(ClassId.DOUBLE, 1.75, 1.75),
                arguments(ClassId.SINGLE, 0.1, (double) 0.1f),
                arguments(ClassId.INT32, -3.9, -3.0),
                arguments(ClassId.INT32, Double.NaN, (double) Integer.MIN_VALUE),
                arguments(ClassId.UINT8, 200.0, 200.0),
                arguments(ClassId.UINT8, 300.7, 44.0),
                arguments(ClassId.INT64, 1e30, (double) Long.MIN_VALUE),
                arguments(ClassId.UINT32, 7.0, 7.0));
    }

    @ParameterizedTest
    @MethodSource("stores")
    void castsWhatIsStored(ClassId classId, double value, double kept) {
        try (NVNumericArray array = NVNumericArray.zeros(classId, Complexity.REAL, 2, 2)) {
            array.set(value, 2, 1);
            assertEquals(kept, array.getDoubleAt(1));
            array.setAt(2, value);
            assertEquals(kept, array.getDouble(1, 2));
        }
    }

    @Test
    void givesUnsignedElementsTheirValue() {
        try (NVNumericArray word = NVNumericArray.of(new int[] {-1}, ClassId.UINT32);
                NVNumericArray wide = NVNumericArray.of(new long[] {-1, 1L << 63}, ClassId.UINT64)) {
            word.set(4_000_000_000L, 1, 1);
            assertEquals(4e9, word.getDouble(1, 1));
            assertEquals(4_000_000_000L, word.getLong(1, 1));
            assertEquals((int) 4_000_000_000L, word.getInt(1, 1));
            assertEquals(0x1p64, wide.getDoubleAt(0));
            assertEquals(0x1p64f, wide.getFloatAt(0));
            assertEquals(0x1p63f, wide.getFloat(1, 2));
            assertEquals(0x1p63, wide.getDoubleAt(1));
            assertEquals(-1L, wide.getLongAt(0));
            assertEquals(-1L, wide.get(1, 1));
            assertEquals(Long.MIN_VALUE, wide.getAt(1));
        }
    }
}
