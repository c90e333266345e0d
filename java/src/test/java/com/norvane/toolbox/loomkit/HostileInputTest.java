package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.*;
import static org.junit.jupiter.params.provider.Arguments.arguments;

import com.norvane.toolbox.loomkit.PublicApi.Operation;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.lang.reflect.InvocationTargetException;
import java.nio.file.Path;
import java.util.*;
import java.util.stream.Stream;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;

/** Arguments that native code would not survive, and others that make no sense: each ends in an exception. */
class HostileInputTest {
    private static final long SEED = 20240811;
    private static final int RANDOM_ROUNDS = 25;

    private final Random random = new Random(SEED);
    private final Map<Class<?>, Object[]> values = PublicApi.values();
    private final Set<String> faults = new TreeSet<>();
    private int calls;

    private static Arguments refused(String what, Class<? extends Throwable> how, Executable call) {
        return arguments(what, how, call);
    }

    private static Arguments refused(String what, Executable call) {
        return refused(what, IllegalArgumentException.class, call);
    }

    static Stream<Arguments> making() {
        int[] pair = {1, 2};
        return Stream.of(
                refused("text as numbers", () -> NVNumericArray.of("12")),
                refused("a cell as numbers",
                        () -> NVNumericArray.of(com.norvane.extern.java.NVCellArray.row(), ClassId.DOUBLE)),
                refused("a class without numbers", () -> NVNumericArray.of(1.0, ClassId.CELL)),
                refused("parts large together",
                        () -> NVNumericArray.complex(new double[1 << 16][1], new double[][] {new double[1 << 16]})),
                refused("too many elements but none", () -> NVNumericArray.zeros(0, 1 << 16, 1 << 16)),
                refused("flat data too short", () -> NVNumericArray.ofFlat(pair, ClassId.INT8, new int[1], null)),
                refused("flat text", () -> NVNumericArray.ofFlat(pair, ClassId.INT8, "ab", null)),
                refused("not all numbers",
                        () -> NVNumericArray.ofFlat(pair, ClassId.INT8, new Object[] {1.0, "two"}, null)),
                refused("an array of strangers", () -> NVBuiltinArray.of(new Object[] {new Object()})),
                refused("too few flags", () -> NVLogicalArray.ofFlat(new int[] {2, 2}, new boolean[3])),
                refused("a huge cell", () -> NVCellArray.empty(1 << 20, 1 << 20)),
                refused("a lambda in a cell", () -> NVCellArray.row((Runnable) () -> {})),
                refused("an object reference in a cell", () -> NVCellArray.row(new NVJavaObjectRef("x"))),
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

    private static NVNumericArray sparse(int[] rows, int[] columns, int m, int n) {
        return NVNumericArray.sparse(rows, columns, new double[] {1}, m, n);
    }

    static Stream<Arguments> makingSparse() {
        Class<ArrayIndexOutOfBoundsException> outside = ArrayIndexOutOfBoundsException.class;
        int[] one = {1};
        int[] two = {1, 1};
        return Stream.of(
                refused("row 0", outside, () -> sparse(new int[] {1, 0}, one, 2, 2)),
                refused("row 3 of 2", outside, () -> sparse(new int[] {1, 3}, one, 2, 2)),
                refused("a huge column", outside, () -> sparse(one, new int[] {Integer.MAX_VALUE}, 2, 2)),
                refused("a negative row", outside, () -> sparse(new int[] {Integer.MIN_VALUE, 1}, one, 2, 2)),
                refused("no columns", outside, () -> sparse(two, one, 2, 0)),
                refused("lengths 2 and 3", () -> sparse(two, new int[3], 2, 2)),
                refused("lengths 2 and 0", () -> sparse(two, new int[0], 2, 2)),
                refused("-1 rows", () -> sparse(two, two, -1, 2)),
                refused("-1 rows and columns", () -> sparse(two, two, -1, -1)),
                refused("no values", () -> NVNumericArray.sparse(two, two, new double[0], 2, 2)),
                refused("parts of unlike length",
                        () -> NVNumericArray.sparse(two, two, new double[2], new double[3], 2, 2)));
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
                refused("stored cell index", outside, () -> cell.setAt(1, 2.0)),
                refused("a stranger in a cell", () -> cell.setAt(0, new Object())),
                refused("comparison with nothing", NullPointerException.class, () -> matrix.compareTo(null)));
    }

    @ParameterizedTest(name = "{0}")
    @MethodSource({"making", "makingSparse", "using"})
    void endsInAnException(String what, Class<? extends Throwable> how, Executable call) {
        assertThrows(how, call);
    }

    @Test
    void callsRefuseBadArguments() throws IOException {
        try (Component showcase = TestComponents.open("showcase")) {
            Map<Executable, Class<? extends Throwable>> refusals = Map.of(
                    () -> showcase.call(null, 1), NullPointerException.class,
                    () -> showcase.call("", 1), IllegalArgumentException.class,
                    () -> showcase.call("same\0", 1), IllegalArgumentException.class,
                    () -> showcase.call("same", -1, 1.0), IllegalArgumentException.class,
                    () -> showcase.call("same", 1_000_000, 1.0), IllegalArgumentException.class,
                    () -> showcase.call("no such function", 1), NVException.class,
                    () -> showcase.call1("same", JavaDataTest.containsItself()), IllegalArgumentException.class,
                    () -> showcase.call1("same"), NVException.class,
                    () -> showcase.call1("same", Collections.nCopies(50, 1.0).toArray()), NVException.class,
                    () -> showcase.call1("same", JavaDataTest.cellsOfCells(102)), IllegalArgumentException.class);
            refusals.forEach((call, how) -> assertThrows(how, call));
            assertEquals(1, showcase.call1("same", 1.0).asNumeric().doubleValue());
        }
    }

    @AfterEach
    void resetStreams() {
        Loomkit.setOutput(null);
        Loomkit.setErrorOutput(null);
    }

    /** Every public operation with values that make no sense: each parameter in turn, then all of them at random. */
    @Test
    void everyCallGivesAValueOrSaysWhatWasWrong() throws Exception {
        for (Operation operation : PublicApi.operations()) {
            Class<?>[] types = operation.callee.getParameterTypes();
            Object[] usual = operation.usualArguments(values);
            call(operation, usual);
            for (int i = 0; i < types.length; i++) {
                for (Object value : values.get(types[i])) {
                    Object[] arguments = usual.clone();
                    arguments[i] = value;
                    call(operation, arguments);
                }
            }
            for (int round = 0; types.length > 1 && round < RANDOM_ROUNDS; round++) {
                call(operation, Arrays.stream(types).map(type -> anyOf(values.get(type))).toArray());
            }
        }
        assertEquals(Set.of(), faults, "seed " + SEED);
        assertTrue(calls > 5000, "only " + calls + " calls were made");
        assertEquals(2.5, NVNumericArray.of(2.5).doubleValue());
    }

    private Object anyOf(Object[] known) {
        return known[random.nextInt(known.length)];
    }

    /** Messages of the virtual machine itself, on a null that nobody looked for, begin with "Cannot". */
    private void call(Operation operation, Object[] arguments) throws Exception {
        calls++;
        Object receiver = operation.receiver.call();
        try {
            PublicApi.close(operation.call(receiver, arguments));
        } catch (InvocationTargetException wrapper) {
            Throwable thrown = wrapper.getCause();
            String message = thrown.getMessage();
            if (!PublicApi.isStated(thrown) || message == null || message.startsWith("Cannot ")) {
                faults.add(operation.callee + " threw " + thrown);
            }
        } finally {
            PublicApi.close(receiver);
        }
    }

    @Test
    void aClosedArrayRefusesAllUse() throws Exception {
        Set<String> working = Set.of("close", "isClosed", "asNumeric", "asChar", "asLogical", "asCell", "asStruct",
                "asFunction", "equals", "toString");
        for (Operation operation : PublicApi.operations()) {
            String name = operation.callee.getName();
            Object array = operation.receiver.call();
            PublicApi.close(array);
            PublicApi.close(array);
            if (array instanceof NVBuiltinArray && !working.contains(name)) {
                Object[] usual = operation.usualArguments(values);
                Throwable refusal = assertThrows(InvocationTargetException.class, () -> operation.call(array, usual),
                        operation.callee.toString()).getCause();
                boolean ofType = name.startsWith("toFlat") && usual.length == 1;
                Class<?> expected = ofType ? IllegalArgumentException.class : IllegalStateException.class;
                assertEquals(expected, refusal.getClass(), operation.callee.toString());
                calls++;
            }
        }
        assertTrue(calls > 200, "only " + calls + " methods were tried");
    }
}
