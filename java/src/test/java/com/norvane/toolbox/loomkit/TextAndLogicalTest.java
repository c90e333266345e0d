package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class TextAndLogicalTest {
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
    void fillsShorterRowsUpAndStoresUnits() {
        try (NVCharArray array = NVCharArray.of("ab", "c", null)) {
            assertArrayEquals(new char[][] {{'a', 'b'}, {'c', 0}, {0, 0}}, array.toCharArray());
            assertThrows(IllegalStateException.class, array::toJavaString);
            array.set('X', 2, 1);
            array.setAt(5, 'Y');
            assertEquals('X', array.getAt(1));
            assertArrayEquals(new String[] {"ab", "X", "\0Y"}, array.toStrings());
            array.setData("123456".toCharArray());
            assertArrayEquals(new String[] {"14", "25", "36"}, array.toStrings());
        }
    }

    @Test
    void keepsPagesOfText() {
        try (NVCharArray array = NVCharArray.ofFlat(new int[] {1, 2, 2}, "abcd".toCharArray())) {
            assertArrayEquals(new char[][][] {{{'a', 'c'}, {'b', 'd'}}}, (char[][][]) array.toObject());
            assertThrows(IllegalStateException.class, array::toStrings);
            assertThrows(IllegalArgumentException.class, array::toCharArray);
        }
    }

    @Test
    void readsAndStoresLogicalElements() {
        boolean[][] rows = {{true, false}, {false, false}};
        try (NVLogicalArray array = NVLogicalArray.of(rows)) {
            assertArrayEquals(rows, array.toBooleanArray());
            array.set(true, 2, 2);
            array.setAt(0, false);
            assertFalse(array.getAt(0));
            assertArrayEquals(new boolean[] {false, false, false, true}, array.toFlatBooleanArray());
            array.setData(new boolean[] {true, true, false, false});
            assertArrayEquals(new boolean[][] {{true, false}, {true, false}}, array.toBooleanArray());
        }
        try (NVLogicalArray scalar = NVLogicalArray.of(true);
                NVLogicalArray flat = NVLogicalArray.ofFlat(new int[] {2}, new boolean[] {false, true});
                NVLogicalArray falses = NVLogicalArray.falses(2, 1)) {
            assertTrue(scalar.getAt(0));
            assertArrayEquals(new boolean[][] {{false, true}}, flat.toBooleanArray());
            assertArrayEquals(new boolean[2], falses.toFlatBooleanArray());
        }
    }
}
