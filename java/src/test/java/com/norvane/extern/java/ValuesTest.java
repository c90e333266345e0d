package com.norvane.extern.java;

import static org.junit.jupiter.api.Assertions.*;

import java.util.Map;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;

class ValuesTest {
    /** Displayed as an array in native memory is. */
    private static final class Rows {
        @Override
        public String toString() {
            return "1  2\n3  4\n";
        }
    }

    @Test
    void keepsTheFieldsOfAnElementTogether() {
        NVStructArray struct =
                new NVStructArray(new int[] {2, 1}, new String[] {"a", "b"}, 1, "one", 2, "two");

        assertEquals("two", struct.get("b", 1));
        assertEquals(2, struct.get(2));
        assertEquals("2-by-1 struct [a, b] [1, one, 2, two]", struct.toString());
        assertEquals("1-by-2 cell [1  2; 3  4, a]", NVCellArray.row(new Rows(), "a").toString());
        assertThrows(IllegalArgumentException.class, () -> struct.get("c", 0));
        assertThrows(ArrayIndexOutOfBoundsException.class, () -> struct.get("a", 2));
    }

    @Test
    void comparesByExtentsNamesAndDeepContents() {
        Object[] values = {new double[][] {{1}, {2}}, null};
        Object[] same = {new double[][] {{1}, {2}}, null};
        NVStructArray struct = new NVStructArray(new int[] {1, 1}, new String[] {"x", "y"}, values);
        NVStructArray twin = new NVStructArray(new int[] {1, 1}, new String[] {"x", "y"}, same);

        assertEquals(struct, twin);
        assertEquals(struct.hashCode(), twin.hashCode());
        assertEquals(NVStructArray.of(Map.of("x", 1)), new NVStructArray(new int[] {1, 1}, new String[] {"x"}, 1));
        assertNotEquals(struct, new NVStructArray(new int[] {1, 1}, new String[] {"y", "x"}, values));
        assertEquals(NVCellArray.row(new int[] {1}, "a"), NVCellArray.row(new int[] {1}, "a"));
        assertNotEquals(NVCellArray.row(1, 2), NVCellArray.column(1, 2));
        assertNotEquals(NVCellArray.row(1, 2), NVCellArray.row(1, 3));
    }

    @Test
    void isNotChangedThroughWhatItWasMadeOfOrGave() {
        Object[] elements = {1, 2};
        int[] dimensions = {1, 2};
        NVCellArray cell = new NVCellArray(dimensions, elements);
        elements[0] = 9;
        dimensions[0] = 9;
        cell.getFlatArray()[1] = 9;
        cell.getDimensions()[1] = 9;

        assertEquals(NVCellArray.row(1, 2), cell);
        assertEquals(
                "2-by-3 cell [1, 4, 2, 5, 3, 6]", NVCellArray.of(new Object[][] {{1, 2, 3}, {4, 5, 6}}).toString());
    }

    static Stream<Executable> refusedShapes() {
        String[] none = {};
        return Stream.of(
                () -> new NVCellArray(new int[0]),
                () -> new NVCellArray(new int[] {2, 2}, 1, 2, 3),
                () -> new NVCellArray(new int[] {-1, -1}, 1),
                () -> new NVCellArray(new int[] {0, 1 << 20, 1 << 20}),
                () -> new NVCellArray(new int[256]),
                () -> NVCellArray.of(new Object[][] {{1}, {1, 2}}),
                () -> new NVStructArray(new int[] {1, 1}, new String[] {"a"}),
                () -> new NVStructArray(new int[] {1, 1}, new String[] {"a", "a"}, 1, 2),
                () -> new NVStructArray(new int[] {1, 1}, new String[] {""}, 1),
                () -> new NVStructArray(new int[] {1, 1}, new String[] {"\ud800"}, 1),
                () -> new NVStructArray(new int[] {1, 1}, new String[] {"a\0b"}, 1),
                () -> new NVStructArray(new int[] {1 << 20, 1 << 20}, none));
    }

    @ParameterizedTest
    @MethodSource("refusedShapes")
    void refusesWhatNoArrayHas(Executable making) {
        assertThrows(IllegalArgumentException.class, making);
    }
}
