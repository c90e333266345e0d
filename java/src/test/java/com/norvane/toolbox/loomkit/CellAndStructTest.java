package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.*;

import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.Test;

class CellAndStructTest {
    private static double numberAt(NVCellArray cell, int index) {
        try (NVArray element = cell.getAt(index)) {
            return element.asNumeric().doubleValue();
        }
    }

    @Test
    void holdsValuesOfAnyKind() {
        try (NVNumericArray number = NVNumericArray.of(3.5);
                NVCellArray cell = NVCellArray.row("text", new double[][] {{1, 2}}, true, null, number)) {
            assertEquals(ClassId.CELL, cell.classId());
            assertArrayEquals(new int[] {1, 5}, cell.dimensions());
            assertEquals("text", cell.get(1, 1).asChar().toJavaString());
            assertArrayEquals(new double[][] {{1, 2}}, cell.get(1, 2).asNumeric().toDoubleArray());
            assertTrue(cell.get(1, 3).asLogical().getAt(0));
            assertTrue(cell.get(1, 4).asNumeric().isEmpty());
            assertThrows(IllegalStateException.class, () -> cell.getAt(0).asNumeric());
            assertEquals(3.5, numberAt(cell, 4));
        }
    }

    @Test
    void sharesWhatItGivesAndCopiesWhatItTakes() {
        try (NVNumericArray source = NVNumericArray.of(1.0);
                NVCellArray cell = NVCellArray.column(source, 2.0)) {
            source.setAt(0, 9.0);
            assertEquals(1, numberAt(cell, 0));
            try (NVArray element = cell.getAt(0)) {
                element.asNumeric().setAt(0, 7.0);
            }
            assertEquals(7, numberAt(cell, 0));
        }
    }

    @Test
    void neverContainsItself() {
        try (NVCellArray cell = NVCellArray.row(1.0, 2.0)) {
            cell.setAt(0, cell);
            try (NVCellArray inner = cell.getAt(0).asCell()) {
                inner.setAt(1, cell);
                assertEquals(1, numberAt(inner, 0));
            }
            assertNotNull(cell.toString());
            assertEquals(cell, cell.duplicate());
        }
    }

    @Test
    void takesBackWhatItGaveAsAJavaValue() {
        Object[] fields = {"text", new double[] {1, 2}, com.norvane.extern.java.NVCellArray.row(true), null};
        com.norvane.extern.java.NVStructArray plain =
                new com.norvane.extern.java.NVStructArray(new int[] {2, 1}, new String[] {"a", "b"}, fields);
        try (NVStructArray struct = NVStructArray.of(plain);
                NVStructArray again = NVStructArray.of(struct.toObject())) {
            assertEquals(struct, again);
            again.get("a").asChar().setAt(0, 'T');
            assertEquals("text", struct.get("a").asChar().toJavaString());
        }
    }

    @Test
    void refusesNativeArraysInJavaValues() {
        try (NVNumericArray number = NVNumericArray.of(3.5);
                NVCellArray cell = NVCellArray.row(1.0)) {
            for (NVArray array : List.of(number, new NVJavaObjectRef("object"))) {
                Object holding = com.norvane.extern.java.NVCellArray.row(1.0, array);
                List<Object> values = List.of(
                        holding,
                        com.norvane.extern.java.NVCellArray.row(holding),
                        com.norvane.extern.java.NVStructArray.of(Map.of("field", holding)));
                for (Object value : values) {
                    assertThrows(IllegalArgumentException.class, () -> NVBuiltinArray.of(value));
                    assertThrows(IllegalArgumentException.class, () -> cell.setAt(0, value));
                }
            }
            var fields = com.norvane.extern.java.NVStructArray.of(Map.of("field", new NVJavaObjectRef("object")));
            assertThrows(IllegalArgumentException.class, () -> NVStructArray.of(fields));
        }
    }

    @Test
    void stopsNestingInTime() {
        NVCellArray deepest = NVCellArray.row(1.0);
        for (int levels = 1; levels < ValueTree.MAX_LEVELS; levels++) {
            try (NVCellArray inner = deepest) {
                deepest = NVCellArray.row(inner);
            }
        }
        refusesAnotherLevel(deepest);
        deepest.close();
    }

    private static void refusesAnotherLevel(NVCellArray deepest) {
        assertThrows(IllegalArgumentException.class, () -> NVCellArray.row(deepest));
        try (NVBuiltinArray again = NVBuiltinArray.deserialize(deepest.serialize())) {
            assertEquals(deepest, again);
            assertThrows(IllegalArgumentException.class, () -> NVCellArray.row(again));
        }
        com.norvane.extern.java.NVCellArray wrapped = com.norvane.extern.java.NVCellArray.row(deepest);
        assertThrows(IllegalArgumentException.class, () -> NVCellArray.of(wrapped).setAt(0, wrapped));
        try (NVCellArray inside = deepest.getAt(0).asCell()) {
            assertThrows(IllegalArgumentException.class, () -> inside.setAt(0, inside));
        }
        assertNotNull(deepest.toString());
    }

    @Test
    void addressesFieldsOfEveryElementByName() {
        List<String> names = List.of("size", "gr\u00fc\u00df \ud83d\ude00", "c");
        try (NVStructArray struct = NVStructArray.create(new int[] {2, 2}, names.toArray(new String[0]))) {
            assertEquals(names, struct.fieldNames());
            assertTrue(struct.hasField("size"));
            assertFalse(struct.hasField("none"));
            for (int index = 0; index < 4; index++) {
                for (String field : names) {
                    struct.setAt(field, index, field + index);
                }
            }
            struct.set("size", "changed", 2, 1);
            assertEquals("changed", struct.getAt("size", 1).asChar().toJavaString());
            assertEquals("c3", struct.get("c", 2, 2).asChar().toJavaString());
            assertEquals("size2", ((NVCharArray) struct.toObject().get("size", 2)).toJavaString());
            assertThrows(IllegalArgumentException.class, () -> struct.get("none"));
            assertThrows(IllegalArgumentException.class, () -> struct.set("none", 1));
            for (int outside : new int[] {4, -1, Integer.MAX_VALUE}) {
                assertThrows(IndexOutOfBoundsException.class, () -> struct.getAt("c", outside));
            }
            assertThrows(IndexOutOfBoundsException.class, () -> struct.get("c", 3, 1));
        }
    }
}
