package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;

import java.lang.reflect.Array;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Random;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.EnumSource;
import org.junit.jupiter.params.provider.MethodSource;

class NumericArrayTest {
    /** The value that a class keeps of a whole number that 8 bits with a sign hold. */
    private static double kept(ClassId classId, int value) {
        String name = classId.name();
        return name.startsWith("UINT") ? value & (1L << Integer.parseInt(name.substring(4))) - 1 : value;
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
        int[] values = random.ints(count, -128, 128).toArray();
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
