package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.Arrays;
import java.util.Random;
import java.util.stream.IntStream;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;
import org.junit.jupiter.params.provider.ValueSource;

class SparseArrayTest {
    /** A random history of stores against a full matrix. */
    @ParameterizedTest
    @ValueSource(longs = {1, 2, 3, 4})
    void followsAFullMatrixThroughRandomStores(long seed) {
        Random random = new Random(seed);
        int rows = 1 + random.nextInt(12);
        int columns = 1 + random.nextInt(12);
        double[][] model = new double[rows][columns];
        try (NVNumericArray array = NVNumericArray.sparse(new int[0], new int[0], new double[0], rows, columns)) {
            for (int step = 0; step < 400; step++) {
                int i = random.nextInt(rows);
                int j = random.nextInt(columns);
                double value = random.nextInt(3) == 0 ? 0 : random.nextInt(9) - 4;
                model[i][j] = value;
                if (random.nextBoolean()) {
                    array.set(value, i + 1, j + 1);
                } else {
                    array.setAt(i + rows * j, value);
                }
            }
            int stored = 0;
            for (int j = 0; j < columns; j++) {
                for (int i = 0; i < rows; i++) {
                    assertEquals(model[i][j], array.getDouble(i + 1, j + 1), "seed " + seed);
                    stored += model[i][j] == 0 ? 0 : 1;
                }
            }
            assertArrayEquals(model, array.toDoubleArray(), "seed " + seed);
            assertEquals(stored, array.numberOfNonZeros(), "seed " + seed);
            assertEquals(stored, array.toFlatDoubleArray().length, "seed " + seed);
        }
    }

    @Test
    void sumsDuplicatesAndRepeatsSingleValues() {
        try (NVNumericArray array =
                NVNumericArray.sparse(new int[] {1, 2, 2}, new int[] {1}, new double[] {5}, 2, 3)) {
            assertTrue(array.isSparse());
            assertArrayEquals(new double[][] {{5, 0, 0}, {10, 0, 0}}, array.toDoubleArray());
            assertArrayEquals(new int[] {1, 2}, array.subscriptsAlong(0));
            assertArrayEquals(new int[] {1, 1}, array.subscriptsAlong(1));
        }
    }

    @Test
    void keepsComplexElementsUntilBothPartsAreZero() {
        try (NVNumericArray array =
                NVNumericArray.sparse(
                        new int[] {1, 2}, new int[] {1, 2}, new double[] {1, 2}, new double[] {3, 4}, 2, 2)) {
            array.set(0.0, 1, 1);
            assertEquals(2, array.numberOfNonZeros());
            array.setImaginary(0, 1, 1);
            assertEquals(1, array.numberOfNonZeros());
            assertArrayEquals(new double[][] {{0, 0}, {0, 4}}, array.toImaginaryDoubleArray());
        }
    }

    @Test
    void holdsLogicalElements() {
        try (NVLogicalArray array = NVLogicalArray.sparse(new boolean[][] {{true, false}, {false, true}})) {
            assertEquals(2, array.numberOfNonZeros());
            array.set(false, 1, 1);
            array.set(true, 2, 1);
            assertArrayEquals(new boolean[][] {{false, false}, {true, true}}, array.toBooleanArray());
            assertArrayEquals(new boolean[] {true, true}, array.toFlatBooleanArray());
        }
    }

    @Test
    void takesStoredElementsOnlyAsFlatData() {
        try (NVNumericArray array = NVNumericArray.sparse(new double[][] {{1, 0}, {0, 2}})) {
            array.setData(new int[] {7, 8});
            assertArrayEquals(new double[][] {{7, 0}, {0, 8}}, array.toDoubleArray());
            assertThrows(IllegalArgumentException.class, () -> array.setData(new int[4]));
        }
    }

    private static NVNumericArray sparse(int[] rows, int[] columns, int m, int n) {
        return NVNumericArray.sparse(rows, columns, new double[] {1}, m, n);
    }

    static Stream<Runnable> outside() {
        return Stream.of(
                () -> sparse(new int[] {0}, new int[] {1}, 2, 2),
                () -> sparse(new int[] {1, 0}, new int[] {1}, 2, 2),
                () -> sparse(new int[] {1, 3}, new int[] {1}, 2, 2),
                () -> sparse(new int[] {1}, new int[] {Integer.MAX_VALUE}, 2, 2),
                () -> sparse(new int[] {Integer.MIN_VALUE, 1}, new int[] {1}, 2, 2),
                () -> sparse(new int[] {1}, new int[] {1}, 0, 2),
                () -> sparse(new int[] {1, 1}, new int[] {1}, 2, 0));
    }

    @ParameterizedTest
    @MethodSource("outside")
    void refusesPositionsOutside(Runnable making) {
        assertThrows(ArrayIndexOutOfBoundsException.class, making::run);
    }

    static Stream<Runnable> mismatched() {
        int[] two = {1, 1};
        int[] three = {1, 1, 1};
        return Stream.of(
                () -> sparse(two, three, 2, 2),
                () -> sparse(two, new int[0], 2, 2),
                () -> sparse(two, two, -1, 2),
                () -> sparse(two, two, -1, -1),
                () -> NVNumericArray.sparse(two, two, new double[0], 2, 2),
                () -> NVNumericArray.sparse(two, two, new double[2], new double[3], 2, 2));
    }

    @ParameterizedTest
    @MethodSource("mismatched")
    void refusesShapesThatDontAgree(Runnable making) {
        assertThrows(IllegalArgumentException.class, making::run);
    }

    @Test
    void hasRoomForMorePositionsThanAnIntCounts() {
        try (NVNumericArray array = sparse(new int[] {100_000}, new int[] {100_000}, 100_000, 100_000)) {
            assertEquals(1, array.getDouble(100_000, 100_000));
            assertEquals(1, array.numberOfNonZeros());
            assertThrows(IndexOutOfBoundsException.class, array::numberOfElements);
        }
    }

    /** A number that does something when it is asked for its value. */
    private static Number doing(Runnable deed, double value) {
        return new Number() {
            private static final long serialVersionUID = 1L;

            @Override
            public double doubleValue() {
                deed.run();
                return value;
            }

            @Override
            public float floatValue() {
                return (float) doubleValue();
            }

            @Override
            public long longValue() {
                return (long) doubleValue();
            }

            @Override
            public int intValue() {
                return (int) doubleValue();
            }
        };
    }

    private static int[] upTo(int count) {
        return IntStream.rangeClosed(1, count).toArray();
    }

    private static Object[] numbers(Number first, int count) {
        Object[] data = new Object[count];
        Arrays.fill(data, 2.5);
        data[0] = first;
        return data;
    }

    /** The deed runs in the middle of the store: the tables have moved when the next element comes. */
    @Test
    void takesDataWhoseNumbersMakeItGrow() {
        double[] ones = new double[10];
        Arrays.fill(ones, 1);
        try (NVNumericArray array = NVNumericArray.sparse(upTo(10), upTo(10), ones, 1000, 1000)) {
            Runnable growing =
                    () -> IntStream.range(0, 20_000).forEach(k -> array.set(9.0, 1 + k % 1000, 500 + k / 1000));
            array.setData(numbers(doing(growing, 7), 10));
            assertEquals(20_010, array.numberOfNonZeros());
            for (int i = 1; i <= 10; i++) {
                assertEquals(i == 1 ? 7 : 2.5, array.getDouble(i, i), "stored before and after the tables moved");
            }
        }
    }

    @Test
    void takesDataWhoseNumbersMakeItShrinkOrCloseIt() {
        int count = 100_000;
        double[] ones = new double[count];
        Arrays.fill(ones, 1);
        int[] firstColumn = new int[count];
        Arrays.fill(firstColumn, 1);
        NVNumericArray array = NVNumericArray.sparse(upTo(count), firstColumn, ones, count, 1);
        Runnable shrinking = () -> IntStream.range(10, count).forEach(k -> array.setAt(count + 9 - k, 0.0));
        array.setData(numbers(doing(shrinking, 7), count));
        assertArrayEquals(new double[] {7, 2.5, 2.5, 2.5, 2.5, 2.5, 2.5, 2.5, 2.5, 2.5}, array.toFlatDoubleArray());
        array.setData(numbers(doing(array::close, 8), 10));
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
            for (Object data : new Object[] {new double[4], new int[2500], new float[2], numbers(1, 2500)}) {
                assertThrows(IllegalArgumentException.class, () -> array.setData(data));
            }
            assertThrows(IllegalArgumentException.class, () -> complex.setImaginaryData(new double[3]));
            assertThrows(IllegalArgumentException.class, () -> logical.setData(new boolean[2]));
            assertArrayEquals(new double[] {1, 2, 3}, array.toFlatDoubleArray());
        }
    }
}
