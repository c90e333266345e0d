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
    private static Arguments refused(String what, Class<? extends Throwable> how, Executable call) {
        return arguments(what, how, call);
    }

    private static Arguments refused(String what, Executable call) {
        return refused(what, IllegalArgumentException.class, call);
    }

    static Stream<Arguments> makingNumbers() {
        Object[] notAllNumbers = {1.0, "two"};
        int[] pair = {1, 2};
        return Stream.of(
                refused("text as numbers", () -> NVNumericArray.of("12")),
                refused("a cell as numbers",
                        () -> NVNumericArray.of(com.norvane.extern.java.NVCellArray.row(), ClassId.DOUBLE)),
                refused("a class without numbers", () -> NVNumericArray.of(1.0, ClassId.CELL)),
                refused("shared rows", () -> NVNumericArray.of(JavaDataTest.sharedRows(1 << 16, 1 << 16))),
                refused("parts large together",
                        () -> NVNumericArray.complex(new double[1 << 16][1], new double[][] {new double[1 << 16]})),
                refused("too many elements but none", () -> NVNumericArray.zeros(0, 1 << 16, 1 << 16)),
                refused("flat data too short", () -> NVNumericArray.ofFlat(pair, ClassId.INT8, new int[1], null)),
                refused("flat text", () -> NVNumericArray.ofFlat(pair, ClassId.INT8, "ab", null)),
                refused("not all numbers", () -> NVNumericArray.ofFlat(pair, ClassId.INT8, notAllNumbers, null)),
                refused("an array of strangers", () -> NVBuiltinArray.of(new Object[] {new Object()})));
    }

    static Stream<Arguments> makingOthers() {
        return Stream.of(
                refused("too few flags", () -> NVLogicalArray.ofFlat(new int[] {2, 2}, new boolean[3])),
                refused("a huge cell", () -> NVCellArray.empty(1 << 20, 1 << 20)),
                refused("a lambda in a cell", () -> NVCellArray.row((Runnable) () -> {})),
                refused("an object reference in a cell", () -> NVCellArray.row(new NVJavaObjectRef("x"))),
                refused("cells without end", () -> NVBuiltinArray.of(JavaDataTest.cellsOfCells(60))),
                refused("the same field twice", () -> NVStructArray.create(new int[] {1}, "a", "a")),
                refused("half a character", () -> NVStructArray.create(new int[] {1}, "\udc00")),
                refused("too many fields in all",
                        () -> NVStructArray.create(new int[] {1 << 20, 1 << 10}, "a", "b", "c")),
                refused("an unknown option", NVException.class, () -> Loomkit.start("-no-such-option")),
                refused("a negative length", () -> Component.open(new ByteArrayInputStream(new byte[0]), -1)),
                refused("no file", IOException.class, () -> Component.open(Path.of("no such file.kpa"))),
                refused("an archive that is none", NVException.class,
                        () -> Component.open(new ByteArrayInputStream(new byte[10_000]))),
                refused("a long length", NVException.class,
                        () -> Component.open(new ByteArrayInputStream(new byte[10]), Integer.MAX_VALUE)));
    }

    static Stream<Arguments> using() {
        NVNumericArray matrix = NVNumericArray.zeros(2, 3);
        NVCellArray cell = NVCellArray.row(1.0);
        NVNumericArray sparse = NVNumericArray.sparse(new double[][] {{1, 0}});
        Class<IndexOutOfBoundsException> outside = IndexOutOfBoundsException.class;
        return Stream.of(
                refused("subscript 0", outside, () -> matrix.getDouble(0, 1)),
                refused("negative subscript", outside, () -> matrix.set(1.0, 1, Integer.MIN_VALUE)),
                refused("index too large", outside, () -> matrix.getDoubleAt(6)),
                refused("sparse index", outside, () -> sparse.setAt(2, 1.0)),
                refused("imaginary part of a real array", () -> matrix.getImaginary(1, 1)),
                refused("wrong depth", () -> matrix.toArray(double[].class)),
                refused("flat of two levels", () -> matrix.toFlatArray(double[][].class)),
                refused("data of a wrong length", () -> matrix.setData(new double[5])),
                refused("data of a wrong type", () -> matrix.setData(new boolean[6])),
                refused("data with a stranger", () -> matrix.setData(new Object[] {1, 2, 3, 4, 5, "6"})),
                refused("cell index", outside, () -> cell.getAt(1)),
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
