package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.math.BigDecimal;
import java.util.Arrays;
import java.util.stream.IntStream;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;

class SparseArrayTest {
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

    private static NVNumericArray sparse(int[] rows, int[] columns, int m, int n) {
        return NVNumericArray.sparse(rows, columns, new double[] {1}, m, n);
    }

    static Stream<Runnable> bad() {
        int[] one = {1};
        int[] two = {1, 1};
        return Stream.of(
                () -> sparse(new int[] {1, 0}, one, 2, 2),
                () -> sparse(new int[] {1, 3}, one, 2, 2),
                () -> sparse(one, new int[] {Integer.MAX_VALUE}, 2, 2),
                () -> sparse(new int[] {Integer.MIN_VALUE, 1}, one, 2, 2),
                () -> sparse(two, one, 2, 0),
                () -> sparse(two, new int[3], 2, 2),
                () -> sparse(two, new int[0], 2, 2),
                () -> sparse(two, two, -1, 2),
                () -> sparse(two, two, -1, -1),
                () -> NVNumericArray.sparse(two, two, new double[0], 2, 2),
                () -> NVNumericArray.sparse(two, two, new double[2], new double[3], 2, 2));
    }

    @ParameterizedTest
    @MethodSource("bad")
    void refusesPositionsOutsideAndShapesThatDontAgree(Runnable making) {
        RuntimeException refused = assertThrows(RuntimeException.class, making::run);
        assertTrue(
                refused instanceof ArrayIndexOutOfBoundsException || refused instanceof IllegalArgumentException,
                refused.toString());
    }

    /** A number that does something when it is asked for its value. */
    private static Number doing(Runnable deed, double value) {
        return new BigDecimal(value) {
            private static final long serialVersionUID = 1L;

            @Override
            public double doubleValue() {
                deed.run();
                return super.doubleValue();
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
