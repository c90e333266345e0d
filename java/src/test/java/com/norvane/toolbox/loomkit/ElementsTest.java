package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.*;

import java.lang.reflect.Array;
import java.math.BigDecimal;
import java.util.*;
import java.util.stream.IntStream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.EnumSource;
import org.junit.jupiter.params.provider.ValueSource;

/** Reads and stores elements of numeric, logical, character and sparse arrays. */
class ElementsTest {
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
            assertEquals(classId, array.classId());
            assertArrayEquals(expected, array.toFlatDoubleArray(), "seed " + seed);
            double[][][] nested = array.toArray(double[][][].class);
            for (int index = 0; index < count; index++) {
                int i = index % extents[0];
                int j = index / extents[0] % extents[1];
                int k = index / extents[0] / extents[1];
                double value = expected[index];
                assertEquals(value, nested[i][j][k], "seed " + seed);
                assertEquals(value, array.getDouble(i + 1, j + 1, k + 1), "seed " + seed);
                assertEquals(value, array.getDoubleAt(index), "seed " + seed);
                assertEquals((long) value, array.getLongAt(index), "seed " + seed);
                assertEquals((float) value, array.getFloatAt(index), "seed " + seed);
                assertEquals((int) (long) value, array.getIntAt(index), "seed " + seed);
                assertEquals((short) (long) value, array.getShort(i + 1, j + 1, k + 1), "seed " + seed);
                assertEquals((byte) (long) value, array.getByteAt(index), "seed " + seed);
                assertEquals(index, array.indexOf(i + 1, j + 1, k + 1));
            }
        }
    }

    @ParameterizedTest
    @ValueSource(
            classes = {
                double[][].class, float[][].class, long[][].class, int[][].class, short[][].class, byte[][].class,
                char[][].class, Double[][].class, Float[][].class, Long[][].class, Integer[][].class,
                Short[][].class, Byte[][].class, Character[][].class
            })
    void readsRowsInEveryType(Class<?> type) {
        try (NVNumericArray array = NVNumericArray.of(new int[][] {{1, 2, 3}, {4, 5, 6}})) {
            Object rows = array.toArray(type);
            List<Integer> read = new ArrayList<>();
            for (int i = 0; i < 6; i++) {
                Object value = Array.get(Array.get(rows, i / 3), i % 3);
                read.add(value instanceof Character ? (Character) value : ((Number) value).intValue());
            }
            assertEquals(List.of(1, 2, 3, 4, 5, 6), read);
            assertEquals(2, Array.getLength(rows));
            assertEquals(3, Array.getLength(Array.get(rows, 1)));
        }
    }

    @Test
    void keepsRealAndImaginaryPartsApart() {
        double[][] real = {{1, 2}, {3, 4}};
        try (NVNumericArray array = NVNumericArray.complex(real, new double[][] {{-1}})) {
            assertEquals(Complexity.COMPLEX, array.complexity());
            assertArrayEquals(new double[][] {{-1, 0}, {0, 0}}, array.toImaginaryDoubleArray());
            array.setImaginary(7, 2, 1);
            array.setImaginaryAt(3, 8);
            assertEquals(7, array.getImaginary(2, 1));
            assertEquals(8, array.getImaginaryAt(3));
            assertArrayEquals(new double[][] {{-1, 0}, {7, 8}}, (double[][]) array.toImaginaryObject());
            array.setImaginaryData(new Integer[] {1, 2, 3, 4});
            assertArrayEquals(new double[] {1, 2, 3, 4}, array.toFlatImaginaryDoubleArray());
            assertArrayEquals(real, array.toDoubleArray());
        }
    }

    @Test
    void keepsAllBitsOfIntegers() {
        long bits = (1L << 60) + 1;
        try (NVNumericArray complex = NVNumericArray.zeros(ClassId.INT64, Complexity.COMPLEX, 1, 2);
                NVNumericArray small = NVNumericArray.zeros(ClassId.UINT8, Complexity.COMPLEX, 1, 1);
                NVNumericArray word = NVNumericArray.of(new int[] {-1}, ClassId.UINT32);
                NVNumericArray wide = NVNumericArray.of(new long[] {-1, 1L << 63, (1L << 63) + 1025}, ClassId.UINT64)) {
            complex.setImaginary(bits, 1, 1);
            complex.setImaginaryAt(1, -bits);
            assertEquals(bits, complex.getImaginaryLongAt(0));
            assertEquals(-bits, complex.getImaginaryLong(1, 2));
            small.setImaginaryAt(0, 200L);
            assertEquals(200, small.getImaginary(1, 1));
            word.set(4_000_000_000L, 1, 1);
            assertEquals(4e9, word.getDouble(1, 1));
            assertEquals(4_000_000_000L, word.getLong(1, 1));
            assertEquals((int) 4_000_000_000L, word.getInt(1, 1));
            assertEquals(0x1p64, wide.getDoubleAt(0));
            assertEquals(0x1p64f, wide.getFloatAt(0));
            assertEquals(0x1p63f, wide.getFloat(1, 2));
            assertEquals(0x1p63, wide.getDoubleAt(1));
            assertEquals(0x1p63 + 2048, wide.getDoubleAt(2), "rounded once");
            assertEquals(-1L, wide.getLongAt(0));
            assertEquals(-1L, wide.get(1, 1));
            assertEquals(Long.MIN_VALUE, wide.getAt(1));
        }
    }

    @ParameterizedTest
    @ValueSource(strings = {"", "abc", "gr\u00fc\u00df", "\ud83d\ude00", "\ud800 alone", "nul \0 inside", "two\nlines"})
    void keepsEveryUnitOfAText(String text) {
        try (NVCharArray array = NVCharArray.of(text)) {
            assertEquals(text, array.toJavaString());
            assertArrayEquals(new int[] {1, text.length()}, array.dimensions());
            assertEquals(text.isEmpty() ? "[]" : text, array.toString());
            assertArrayEquals(text.toCharArray(), array.toFlatCharArray());
        }
    }

    @Test
    void keepsRowsAndPagesOfText() {
        try (NVCharArray array = NVCharArray.of("ab", "c", null);
                NVCharArray pages = NVCharArray.ofFlat(new int[] {1, 2, 2}, "abcd".toCharArray())) {
            assertArrayEquals(new char[][] {{'a', 'b'}, {'c', 0}, {0, 0}}, array.toCharArray());
            assertThrows(IllegalStateException.class, array::toJavaString);
            array.set('X', 2, 1);
            array.setAt(5, 'Y');
            assertEquals('X', array.getAt(1));
            assertArrayEquals(new String[] {"ab", "X", "\0Y"}, array.toStrings());
            array.setData("123456".toCharArray());
            assertArrayEquals(new String[] {"14", "25", "36"}, array.toStrings());

            assertArrayEquals(new char[][][] {{{'a', 'c'}, {'b', 'd'}}}, (char[][][]) pages.toObject());
            assertThrows(IllegalStateException.class, pages::toStrings);
            assertThrows(IllegalArgumentException.class, pages::toCharArray);
        }
    }

    @Test
    void readsAndStoresLogicalElements() {
        boolean[][] rows = {{true, false}, {false, false}};
        try (NVLogicalArray array = NVLogicalArray.of(rows);
                NVLogicalArray scalar = NVLogicalArray.of(true);
                NVLogicalArray flat = NVLogicalArray.ofFlat(new int[] {2}, new boolean[] {false, true});
                NVLogicalArray falses = NVLogicalArray.falses(2, 1);
                NVLogicalArray sparse = NVLogicalArray.sparse(new boolean[][] {{true, false}, {false, true}})) {
            assertArrayEquals(rows, array.toBooleanArray());
            array.set(true, 2, 2);
            array.setAt(0, false);
            assertArrayEquals(new boolean[] {false, false, false, true}, array.toFlatBooleanArray());
            array.setData(new boolean[] {true, true, false, false});
            assertArrayEquals(new boolean[][] {{true, false}, {true, false}}, array.toBooleanArray());
            assertTrue(scalar.getAt(0));
            assertArrayEquals(new boolean[][] {{false, true}}, flat.toBooleanArray());
            assertArrayEquals(new boolean[2], falses.toFlatBooleanArray());

            assertEquals(2, sparse.numberOfNonZeros());
            sparse.set(false, 1, 1);
            sparse.set(true, 2, 1);
            assertArrayEquals(new boolean[][] {{false, false}, {true, true}}, sparse.toBooleanArray());
            assertArrayEquals(new boolean[] {true, true}, sparse.toFlatBooleanArray());
        }
    }

    /** Numbers of which the first does something when it is asked for its value. */
    private static Object[] numbers(Runnable deed, double first, int count) {
        Object[] data = new Object[count];
        Arrays.fill(data, 2.5);
        data[0] = new BigDecimal(first) {
            private static final long serialVersionUID = 1L;

            @Override
            public double doubleValue() {
                deed.run();
                return super.doubleValue();
            }
        };
        return data;
    }

    private static int[] upTo(int count) {
        return IntStream.rangeClosed(1, count).toArray();
    }

    /** The deed runs in the middle of the store: the tables have moved when the next element comes. */
    @Test
    void takesDataWhoseNumbersMakeItGrow() {
        try (NVNumericArray array = NVNumericArray.sparse(upTo(10), upTo(10), new double[] {1}, 1000, 1000)) {
            Runnable growing =
                    () -> IntStream.range(0, 20_000).forEach(k -> array.set(9.0, 1 + k % 1000, 500 + k / 1000));
            array.setData(numbers(growing, 7, 10));
            assertEquals(20_010, array.numberOfNonZeros());
            for (int i = 1; i <= 10; i++) {
                assertEquals(i == 1 ? 7 : 2.5, array.getDouble(i, i), "stored before and after the tables moved");
            }
        }
    }

    @Test
    void takesDataWhoseNumbersMakeItShrinkOrCloseIt() {
        int count = 100_000;
        NVNumericArray array = NVNumericArray.sparse(upTo(count), new int[] {1}, new double[] {1}, count, 1);
        Runnable shrinking = () -> IntStream.range(10, count).forEach(k -> array.setAt(count + 9 - k, 0.0));
        array.setData(numbers(shrinking, 7, count));
        assertArrayEquals(new double[] {7, 2.5, 2.5, 2.5, 2.5, 2.5, 2.5, 2.5, 2.5, 2.5}, array.toFlatDoubleArray());
        array.setData(numbers(array::close, 8, 10));
        assertTrue(array.isClosed());
        assertThrows(IllegalStateException.class, array::numberOfNonZeros);
    }

    @Test
    void takesNoMoreDataThanIsStored() {
        double[] values = {1, 2};
        try (NVNumericArray array = NVNumericArray.sparse(upTo(2), upTo(2), values, 50, 50);
                NVNumericArray complex = NVNumericArray.sparse(upTo(2), upTo(2), values, values, 50, 50);
                NVLogicalArray logical = NVLogicalArray.sparse(new boolean[][] {{true, false}})) {
            array.set(3.0, 3, 3);
            assertTrue(array.allocatedNonZeros() > array.numberOfNonZeros());
            for (Object data : new Object[] {new double[4], new int[2500], new float[2]}) {
                assertThrows(IllegalArgumentException.class, () -> array.setData(data));
            }
            assertThrows(IllegalArgumentException.class, () -> array.setData(numbers(() -> {}, 1, 2500)));
            assertThrows(IllegalArgumentException.class, () -> complex.setImaginaryData(new double[3]));
            assertThrows(IllegalArgumentException.class, () -> logical.setData(new boolean[2]));
            assertArrayEquals(new double[] {1, 2, 3}, array.toFlatDoubleArray());
        }
    }
}
