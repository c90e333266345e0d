package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.Random;
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
}
