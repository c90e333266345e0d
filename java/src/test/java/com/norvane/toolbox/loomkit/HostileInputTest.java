package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.params.provider.Arguments.arguments;

import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.nio.file.Path;
import java.util.Collections;
import java.util.Map;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;

/** Arguments that native code would not survive, and others that make no sense: each ends in an exception. */
class HostileInputTest {
    private static final int[] NONE = null;

    private static Arguments refused(String what, Class<? extends Throwable> how, Executable call) {
        return arguments(what, how, call);
    }

    static Stream<Arguments> makingNumbers() {
        Class<IllegalArgumentException> bad = IllegalArgumentException.class;
        Object[] notAllNumbers = {1.0, "two"};
        Object[] holes = {1.0, null};
        int[] pair = {1, 2};
        return Stream.of(
                refused("text as numbers", bad, () -> NVNumericArray.of("12")),
                refused("an object", bad, () -> NVNumericArray.of(new Object())),
                refused("a cell as numbers", bad,
                        () -> NVNumericArray.of(com.norvane.extern.java.NVCellArray.row(), ClassId.DOUBLE)),
                refused("a class without numbers", bad, () -> NVNumericArray.of(1.0, ClassId.CELL)),
                refused("text that is no number", NumberFormatException.class,
                        () -> NVNumericArray.of(new Object[] {"x"}, ClassId.INT32)),
                refused("an array in itself", bad, () -> NVNumericArray.of(JavaDataTest.containsItself())),
                refused("shared rows", bad, () -> NVNumericArray.of(JavaDataTest.sharedRows(1 << 16, 1 << 16))),
                refused("shared imaginary rows", bad,
                        () -> NVNumericArray.complex(1.0, JavaDataTest.sharedRows(1 << 16, 1 << 16), ClassId.DOUBLE)),
                refused("parts large together", bad,
                        () -> NVNumericArray.complex(new double[1 << 16][1], new double[][] {new double[1 << 16]})),
                refused("a negative extent", bad, () -> NVNumericArray.zeros(2, -3)),
                refused("too many elements", bad, () -> NVNumericArray.zeros(1 << 16, 1 << 16)),
                refused("too many elements but none", bad, () -> NVNumericArray.zeros(0, 1 << 16, 1 << 16)),
                refused("too many dimensions", bad, () -> NVNumericArray.zeros(new int[1_000_000])),
                refused("flat data too short", bad, () -> NVNumericArray.ofFlat(pair, ClassId.INT8, new int[1], null)),
                refused("flat text", bad, () -> NVNumericArray.ofFlat(pair, ClassId.INT8, "ab", null)),
                refused("flat nested", bad, () -> NVNumericArray.ofFlat(pair, ClassId.INT8, new int[2][1], null)),
                refused("not all numbers", bad,
                        () -> NVNumericArray.ofFlat(pair, ClassId.INT8, notAllNumbers, null)),
                refused("holes", bad, () -> NVNumericArray.ofFlat(pair, ClassId.INT8, pair, holes)),
                refused("an array of strangers", bad,
                        () -> NVBuiltinArray.of(new Object[] {new Object()})));
    }

    static Stream<Arguments> makingOthers() {
        Class<IllegalArgumentException> bad = IllegalArgumentException.class;
        return Stream.of(
                refused("too few flags", bad, () -> NVLogicalArray.ofFlat(new int[] {2, 2}, new boolean[3])),
                refused("a huge cell", bad, () -> NVCellArray.empty(1 << 20, 1 << 20)),
                refused("a negative cell", bad, () -> NVCellArray.empty(-1)),
                refused("a lambda in a cell", bad, () -> NVCellArray.row((Runnable) () -> {})),
                refused("an object reference in a cell", bad, () -> NVCellArray.row(new NVJavaObjectRef("x"))),
                refused("a cycle in a cell", bad, () -> NVCellArray.row(JavaDataTest.containsItself())),
                refused("deep cells", bad, () -> NVBuiltinArray.of(JavaDataTest.cellsOfCells(101))),
                refused("cells without end", bad, () -> NVBuiltinArray.of(JavaDataTest.cellsOfCells(60))),
                refused("the same field twice", bad, () -> NVStructArray.create(new int[] {1}, "a", "a")),
                refused("a field without a name", bad, () -> NVStructArray.create(new int[] {1}, "")),
                refused("half a character", bad, () -> NVStructArray.create(new int[] {1}, "\udc00")),
                refused("too many fields in all", bad,
                        () -> NVStructArray.create(new int[] {1 << 20, 1 << 10}, "a", "b", "c")),
                refused("an unknown option", NVException.class, () -> Loomkit.start("-no-such-option")),
                refused("a negative length", bad,
                        () -> Component.open(new ByteArrayInputStream(new byte[0]), -1)),
                refused("no file", IOException.class, () -> Component.open(Path.of("no such file.kpa"))),
                refused("an empty archive", NVException.class,
                        () -> Component.open(new ByteArrayInputStream(new byte[0]))),
                refused("an archive that is none", NVException.class,
                        () -> Component.open(new ByteArrayInputStream(new byte[10_000]))),
                refused("a short archive", NVException.class,
                        () -> Component.open(new ByteArrayInputStream(new byte[10]), 11)),
                refused("a long length", NVException.class,
                        () -> Component.open(new ByteArrayInputStream(new byte[10]), Integer.MAX_VALUE)));
    }

    static Stream<Arguments> using() {
        NVNumericArray matrix = NVNumericArray.zeros(2, 3);
        NVCellArray cell = NVCellArray.row(1.0);
        NVStructArray struct = NVStructArray.of(Map.of("a", 1.0));
        NVNumericArray sparse = NVNumericArray.sparse(new double[][] {{1, 0}});
        Class<IllegalArgumentException> bad = IllegalArgumentException.class;
        Class<IndexOutOfBoundsException> outside = IndexOutOfBoundsException.class;
        return Stream.of(
                refused("subscript 0", outside, () -> matrix.getDouble(0, 1)),
                refused("subscript too large", outside, () -> matrix.getDouble(3, 1)),
                refused("negative subscript", outside, () -> matrix.set(1.0, 1, Integer.MIN_VALUE)),
                refused("one subscript", outside, () -> matrix.getDouble(1)),
                refused("three subscripts", outside, () -> matrix.getDouble(1, 1, 1)),
                refused("no subscripts", outside, () -> matrix.getLong()),
                refused("index too large", outside, () -> matrix.getDoubleAt(6)),
                refused("negative index", outside, () -> matrix.setAt(-1, 1.0)),
                refused("sparse index", outside, () -> sparse.setAt(2, 1.0)),
                refused("imaginary part of a real array", bad, () -> matrix.getImaginary(1, 1)),
                refused("imaginary store", bad, () -> matrix.setImaginary(1, 1, 1)),
                refused("imaginary read", bad, matrix::toImaginaryDoubleArray),
                refused("wrong depth", bad, () -> matrix.toArray(double[].class)),
                refused("wrong leaf", bad, () -> matrix.toArray(String[][].class)),
                refused("flags of numbers", bad, () -> matrix.toArray(boolean[][].class)),
                refused("flat of two levels", bad, () -> matrix.toFlatArray(double[][].class)),
                refused("data of a wrong length", bad, () -> matrix.setData(new double[5])),
                refused("data of a wrong type", bad, () -> matrix.setData(new boolean[6])),
                refused("data that is no array", bad, () -> matrix.setData(1.0)),
                refused("data with a stranger", bad, () -> matrix.setData(new Object[] {1, 2, 3, 4, 5, "6"})),
                refused("cell index", outside, () -> cell.getAt(1)),
                refused("cell subscripts", outside, () -> cell.get(2, 1)),
                refused("comparison with nothing", NullPointerException.class, () -> matrix.compareTo(null)));
    }

    @ParameterizedTest(name = "{0}")
    @MethodSource({"makingNumbers", "makingOthers", "using"})
    void endsInAnException(String what, Class<? extends Throwable> how, Executable call) {
        assertThrows(how, call);
    }

    @Test
    void callsRefuseBadArguments() throws IOException {
        try (Component showcase = TestComponents.open("showcase")) {
            Map<Executable, Class<? extends Throwable>> calls =
                    Map.of(
                            () -> showcase.call(null, 1), NullPointerException.class,
                            () -> showcase.call("", 1), IllegalArgumentException.class,
                            () -> showcase.call("same\0", 1), IllegalArgumentException.class,
                            () -> showcase.call("same", -1, 1.0), IllegalArgumentException.class,
                            () -> showcase.call("same", 1_000_000, 1.0), IllegalArgumentException.class,
                            () -> showcase.call("no such function", 1), NVException.class,
                            () -> showcase.call1("same", JavaDataTest.containsItself()),
                                    IllegalArgumentException.class,
                            () -> showcase.call1("same"), NVException.class,
                            () -> showcase.call1("same", Collections.nCopies(50, 1.0).toArray()), NVException.class,
                            () -> showcase.call1("same", JavaDataTest.cellsOfCells(102)),
                                    IllegalArgumentException.class);
            calls.forEach((call, how) -> assertThrows(how, call));
            assertEquals(1, showcase.call1("same", 1.0).asNumeric().doubleValue());
        }
    }
}
