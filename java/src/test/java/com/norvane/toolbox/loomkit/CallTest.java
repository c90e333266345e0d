package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.params.provider.Arguments.arguments;

import java.io.IOException;
import java.util.List;
import java.util.Map;
import java.util.function.DoubleUnaryOperator;
import java.util.stream.Stream;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;
import org.junit.jupiter.params.provider.ValueSource;

class CallTest {
    private static Component linalg;
    private static Component showcase;

    @BeforeAll
    static void open() throws IOException {
        linalg = TestComponents.open("linalg");
        showcase = TestComponents.open("showcase");
    }

    @AfterAll
    static void close() {
        linalg.close();
        showcase.close();
    }

    /** What the compiler passes for a single argument: an array of references stands for all arguments. */
    static Stream<Arguments> takenAsOne() {
        return Stream.of(
                arguments((Object) new double[][] {{1, 2}, {3, 4}}),
                arguments((Object) new String[] {"ab", "cd"}),
                arguments((Object) new Double[] {1.0, 2.0}),
                arguments((Object) new Object[] {new double[] {1, 2}}),
                arguments((Object) null));
    }

    @ParameterizedTest
    @MethodSource("takenAsOne")
    void takesASingleArrayAsOneArgument(Object[] passed) {
        assertEquals(1, showcase.call("count", 1, passed)[0].asNumeric().doubleValue());
    }

    @Test
    void takesAListOfArguments() {
        for (int count : new int[] {0, 1, 10, 11, 40}) {
            Object[] many = new Object[count];
            assertEquals(count, showcase.call1("count", many).asNumeric().doubleValue());
        }
        Object[] arrays = new NVArray[] {NVNumericArray.of(1.0), new NVJavaObjectRef("x")};
        assertEquals(2, showcase.call("count", 2, arrays)[0].asNumeric().doubleValue());
    }

    static Stream<Object> returned() {
        return Stream.of(
                new double[][] {{1, 2}, {3, 4}},
                new byte[] {1, -1},
                "text",
                new boolean[][] {{true}, {false}},
                com.norvane.extern.java.NVCellArray.row(1.0, "two", com.norvane.extern.java.NVCellArray.row()),
                com.norvane.extern.java.NVStructArray.of(Map.of("a", new float[] {1, 2})));
    }

    @ParameterizedTest
    @MethodSource("returned")
    void takesAndGivesValuesOfEveryKind(Object value) {
        try (NVBuiltinArray expected = NVBuiltinArray.of(value);
                NVArray given = showcase.call1("same", value);
                NVArray passedOn = showcase.call1("same", given)) {
            assertEquals(expected, given);
            assertEquals(expected, passedOn);
            assertSame(expected.getClass(), given.getClass());
        }
    }

    @Test
    void givesNullForAResultThatTheFunctionLeftOut() {
        NVArray[] results = showcase.call("fewer", 3);
        assertNull(results[1]);
        assertNull(results[2]);
        assertTrue(results[0] instanceof NVBuiltinArray);
    }

    @Test
    void passesHandlesAndJavaObjectsThrough() {
        Object object = new Object();
        assertSame(object, ((NVJavaObjectRef) showcase.call1("same", object)).get());
        assertSame("text", ((NVJavaObjectRef) showcase.call1("same", new NVJavaObjectRef("text"))).get());
        try (NVFunctionHandle parabola = showcase.call1("handle_of", "parabola").asFunction()) {
            assertEquals(2, showcase.call("minimize", 1, parabola, 0.0, 9.0)[0].asNumeric().doubleValue(), 1e-6);
            assertEquals(parabola, parabola.duplicate());
        }
    }

    @Test
    void tellsTheStackOfAFailure() {
        NVException failure = assertThrows(NVException.class, () -> showcase.call1("fail_deep", "as asked"));
        List<String> stack = failure.getNativeStack();

        assertTrue(failure.getMessage().contains("as asked"), failure.getMessage());
        assertTrue(stack.get(0).contains("innermost") && stack.get(1).contains("middle"), stack.toString());
        assertTrue(failure.getStackTrace()[0].getLineNumber() > 0);
        assertEquals("", assertThrows(NVException.class, () -> showcase.call1("fail_standard")).getIdentifier());
    }

    @ParameterizedTest
    @ValueSource(strings = {"fail_deep", "fail_in_call"})
    void tellsTheIdentifierOfAFailure(String function) {
        NVException failure = assertThrows(NVException.class, () -> showcase.call1(function, "as asked"));

        assertEquals("showcase:asked", failure.getIdentifier());
        assertTrue(failure.getNativeStack().stream().allMatch(line -> line.startsWith("at ")), failure.toString());
    }

    /** The lambda calls the component itself, and fails in the end. */
    @Test
    void failsWithTheTextOfAnExceptionInALambda() {
        DoubleUnaryOperator failing =
                x -> {
                    double value = showcase.call1("parabola", x).asNumeric().doubleValue();
                    throw new IllegalStateException("no more than " + value);
                };
        NVException failure =
                assertThrows(NVException.class, () -> showcase.call1("minimize", failing, 0.0, 1.0));
        assertTrue(failure.getMessage().contains("IllegalStateException: no more than "), failure.getMessage());
        assertEquals(1, showcase.call1("same", 1.0).asNumeric().doubleValue());
    }

    @Test
    void keepsArgumentsFromEndingOrChangingWhileAFunctionRuns() {
        NVCellArray cell = NVCellArray.row(1.0);
        NVNumericArray sparse = NVNumericArray.sparse(new double[][] {{1}});
        Object[] list = {cell, sparse};
        try (com.norvane.toolbox.loomkit.Arguments held = new com.norvane.toolbox.loomkit.Arguments(list)) {
            assertEquals(2, held.values().size());
            assertThrows(IllegalStateException.class, () -> cell.setAt(0, 2.0));
            assertThrows(IllegalStateException.class, () -> sparse.setAt(0, 2.0));
            assertEquals(1, sparse.getDoubleAt(0));
            try (NVArray view = cell.getAt(0)) {
                cell.close();
                assertEquals(1, view.asNumeric().doubleValue());
            }
        }
        sparse.setAt(0, 3.0);
        assertEquals(3, sparse.getDoubleAt(0));
    }

    @Test
    void tellsWhatItIs() {
        assertEquals("linalg", linalg.name());
        assertEquals("linalg " + linalg.version(), linalg.toString());
        Map<String, String> functions = linalg.functions();
        assertTrue(functions.keySet().containsAll(List.of("solve", "lstsq", "svd", "eig", "inv", "norm")));
        assertTrue(linalg.help("inv").contains("inverse"), linalg.help("inv"));
        assertThrows(IllegalArgumentException.class, () -> linalg.help("none"));
        assertThrows(UnsupportedOperationException.class, functions::clear);
    }
}
