package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.LinkedHashMap;
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
            assertEquals(3.5, numberAt(cell, 4));
            assertThrows(IllegalStateException.class, () -> cell.getAt(0).asNumeric());
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
    void stopsNestingInTime() {
        NVCellArray cell = NVCellArray.row(1.0);
        int levels = 1;
        while (levels < ValueTree.MAX_LEVELS) {
            try (NVCellArray inner = cell) {
                cell = NVCellArray.row(inner);
            }
            levels++;
        }
        NVCellArray deepest = cell;
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
        deepest.close();
    }

    @Test
    void leavesAnElementInPlaceThatCouldNotBeReplaced() {
        try (NVCellArray cell = NVCellArray.row(1.0)) {
            assertThrows(IllegalArgumentException.class, () -> cell.setAt(0, new Object()));
            assertThrows(IndexOutOfBoundsException.class, () -> cell.setAt(1, 2.0));
            assertThrows(IndexOutOfBoundsException.class, () -> cell.set(2.0, 2, 1));
            assertEquals(1, numberAt(cell, 0));
        }
    }

    @Test
    void viewsNestedElementsAsArrays() {
        try (NVCellArray cell = NVCellArray.column("a", 2.0)) {
            NVArray[][] view = (NVArray[][]) cell.toObject();
            assertEquals("a", view[0][0].asChar().toJavaString());
            view[1][0].asNumeric().setAt(0, 5.0);
            assertEquals(5, numberAt(cell, 1));
        }
    }

    @Test
    void comesFromPureJavaValues() {
        com.norvane.extern.java.NVCellArray pure =
                com.norvane.extern.java.NVCellArray.of(
                        new Object[][] {{1.0, "b"}, {com.norvane.extern.java.NVCellArray.row(3.0), null}});
        try (NVCellArray cell = NVCellArray.of(pure)) {
            assertArrayEquals(new int[] {2, 2}, cell.dimensions());
            assertEquals(3, numberAt(cell.get(2, 1).asCell(), 0));
            assertEquals("b", cell.get(1, 2).asChar().toJavaString());
            assertEquals(0, cell.get(2, 2).asNumeric().numberOfElements());
        }
        com.norvane.extern.java.NVStructArray people =
                new com.norvane.extern.java.NVStructArray(
                        new int[] {1, 2}, new String[] {"name", "age"}, "Ada", 36.0, "Grace", 85.0);
        try (NVStructArray struct = NVStructArray.of(people)) {
            assertEquals("Grace", struct.get("name", 1, 2).asChar().toJavaString());
            assertEquals(36, struct.getAt("age", 0).asNumeric().doubleValue());
        }
    }

    @Test
    void keepsFieldsByName() {
        Map<String, Object> fields = new LinkedHashMap<>();
        fields.put("size", 3);
        fields.put("gr\u00fc\u00df \ud83d\ude00", "x");
        try (NVStructArray struct = NVStructArray.of(fields)) {
            assertEquals(List.of("size", "gr\u00fc\u00df \ud83d\ude00"), struct.fieldNames());
            assertEquals(2, struct.numberOfFields());
            assertTrue(struct.hasField("size"));
            assertFalse(struct.hasField("none"));
            struct.set("size", "changed");
            assertEquals("changed", struct.get("size").asChar().toJavaString());
            assertThrows(IllegalArgumentException.class, () -> struct.get("none"));
            assertThrows(IllegalArgumentException.class, () -> struct.set("none", 1));
        }
    }

    @Test
    void addressesFieldsOfEveryElement() {
        try (NVStructArray struct = NVStructArray.create(new int[] {2, 2}, "a", "b", "c")) {
            for (int index = 0; index < 4; index++) {
                for (String field : struct.fieldNames()) {
                    struct.setAt(field, index, field + index);
                }
            }
            struct.set("b", "changed", 2, 1);
            assertEquals("changed", struct.getAt("b", 1).asChar().toJavaString());
            assertEquals("c3", struct.get("c", 2, 2).asChar().toJavaString());
            assertEquals("b3", ((NVCharArray) struct.toObject().get("b", 3)).toJavaString());
            assertEquals("a2", struct.get("a", 1, 2).asChar().toJavaString());
            assertThrows(IndexOutOfBoundsException.class, () -> struct.getAt("a", 4));
            assertThrows(IndexOutOfBoundsException.class, () -> struct.getAt("a", -1));
            assertThrows(IndexOutOfBoundsException.class, () -> struct.getAt("a", Integer.MAX_VALUE));
            assertThrows(IndexOutOfBoundsException.class, () -> struct.get("a", 3, 1));
        }
    }
}
