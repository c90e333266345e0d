package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.*;
import static org.junit.jupiter.api.Named.named;
import static org.junit.jupiter.params.provider.Arguments.arguments;

import com.norvane.extern.java.NVCellArray;
import com.norvane.extern.java.NVStructArray;
import java.math.BigDecimal;
import java.util.Arrays;
import java.util.stream.Stream;
import org.junit.jupiter.api.Named;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;

class JavaDataTest {
    static Stream<Arguments> classes() {
        return Stream.of(
                arguments(null, ClassId.DOUBLE),
                arguments(1.5, ClassId.DOUBLE),
                arguments(new Long[0][0], ClassId.INT64),
                arguments(new Object[] {null, 1.0}, ClassId.CHAR),
                arguments(new Object[] {new Float[] {null, 1.0f}}, ClassId.SINGLE),
                arguments(new Object[] {new Object[] {(short) 1}, "text"}, ClassId.INT16),
                arguments(new String[0], ClassId.CHAR),
                arguments(true, ClassId.LOGICAL),
                arguments(new byte[][] {{1}}, ClassId.INT8),
                arguments(NVCellArray.row(), ClassId.CELL),
                arguments(new NVStructArray(new int[] {0, 0}, new String[0]), ClassId.STRUCT),
                arguments(new Object[0], null),
                arguments(new Object[] {NVCellArray.row()}, null),
                arguments(BigDecimal.ONE, null),
                arguments(new Object(), null));
    }

    @ParameterizedTest
    @MethodSource("classes")
    void classifiesByTheFirstElement(Object data, ClassId expected) {
        assertEquals(expected, Classification.of(data));
    }

    static Object containsItself() {
        Object[] array = {1.0, null};
        array[1] = array;
        return array;
    }

    static Object nested(int levels) {
        Object array = new Object[] {1.0};
        for (int i = 1; i < levels; i++) {
            array = new Object[] {array};
        }
        return array;
    }

    static Object sharedRows(int rows, int columns) {
        double[][] matrix = new double[rows][];
        Arrays.fill(matrix, new double[columns]);
        return matrix;
    }

    static Object cellsOfCells(int levels) {
        NVCellArray cell = NVCellArray.row();
        for (int i = 1; i < levels; i++) {
            cell = NVCellArray.row(cell, cell);
        }
        return cell;
    }

    /** A number in so many cells, each inside the next. */
    static Object nestedCells(int levels) {
        Object cells = 1.0;
        for (int level = 0; level < levels; level++) {
            cells = NVCellArray.row(cells);
        }
        return cells;
    }

    /** Named, since the display of such data would itself never end. */
    static Stream<Named<Object>> refused() {
        return Stream.of(
                named("in itself", containsItself()),
                named("100000 levels", nested(100_000)),
                named("256 levels", nested(256)),
                named("shared rows", sharedRows(1 << 16, 1 << 16)),
                named("shared rows beside text", new Object[] {"text", sharedRows(1 << 12, 1 << 16)}),
                named("101 cells deep", cellsOfCells(101)),
                named("2^39 cells", cellsOfCells(40)),
                named("in itself in a cell", NVCellArray.row(NVCellArray.row(containsItself()))));
    }

    @ParameterizedTest
    @MethodSource("refused")
    void refusesWhatWouldEndTheProcess(Object data) {
        assertThrows(IllegalArgumentException.class, () -> JavaData.of(data));
    }

    @Test
    void acceptsTheDeepestNesting() {
        assertEquals(0, JavaData.of(nested(255)).levels());
        assertEquals(ValueTree.MAX_LEVELS, JavaData.of(nestedCells(ValueTree.MAX_LEVELS)).levels());
    }

    @Test
    void copiesWhatCouldChangeAndNothingElse() {
        double[] row = {1, 2};
        double[][] matrix = {row};
        Double[] boxed = {1.0};

        double[][] copy = (double[][]) JavaData.of(matrix).value();

        assertNotSame(matrix, copy);
        assertSame(row, copy[0]);
        assertEquals(Double[].class, JavaData.of(boxed).value().getClass());
        assertSame(row, JavaData.of(row).value());
        assertNull(JavaData.of(null).value());
    }

    @Test
    void asksAnObjectForItsTextOnce() {
        Object teller = new Object() {
            private int asked;

            @Override
            public String toString() {
                return "asked " + ++asked;
            }
        };
        Object[] copy = (Object[]) JavaData.of(new Object[] {"a", teller}).value();

        assertEquals("asked 1", copy[1]);
        assertEquals(2.5, ((Object[]) JavaData.of(new Object[] {1.0, 2.5}).value())[1]);
    }

    static Stream<Arguments> extents() {
        int[] ones = new int[256];
        Arrays.fill(ones, 1);
        int[] many = Arrays.copyOf(ones, 255);
        int[] large = {1 << 16, 1 << 14};
        return Stream.of(
                arguments(new int[] {}, new int[] {0, 0}),
                arguments(new int[] {4}, new int[] {1, 4}),
                arguments(new int[] {2, 0, 3}, new int[] {2, 0, 3}),
                arguments(large, large),
                arguments(many, many),
                arguments(new int[] {0, Integer.MAX_VALUE}, new int[] {0, Integer.MAX_VALUE}),
                arguments(new int[] {1 << 16, 1 << 15}, null),
                arguments(new int[] {0, 1 << 16, 1 << 16}, null),
                arguments(new int[] {-1, 2}, null),
                arguments(new int[] {Integer.MIN_VALUE}, null),
                arguments(ones, null));
    }

    @ParameterizedTest
    @MethodSource("extents")
    void checksExtents(int[] given, int[] expected) {
        if (expected == null) {
            assertThrows(IllegalArgumentException.class, () -> Dimensions.checked(given));
        } else {
            assertArrayEquals(expected, Dimensions.checked(given));
            Dimensions.checkShowable(expected);
        }
    }

    static Stream<Arguments> tooLargeToShow() {
        return Stream.of(
                arguments(new int[256], "no Java array has 256 dimensions, only up to 255"),
                arguments(new int[] {1 << 30, 0}, "the extents [1073741824, 0] make Java arrays"),
                arguments(new int[] {1, Integer.MAX_VALUE, Integer.MAX_VALUE, 0}, "the extents [1, 2147483647, "));
    }

    @ParameterizedTest
    @MethodSource("tooLargeToShow")
    void saysWhyJavaArraysCannotShowExtents(int[] extents, String reason) {
        String message = assertThrows(UnsupportedOperationException.class, () -> Dimensions.checkShowable(extents))
                .getMessage();
        assertTrue(message.startsWith(reason), message);
    }
}
