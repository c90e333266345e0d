package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.*;
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
import org.junit.jupiter.params.provider.CsvSource;
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

    /** An array of references stands for all arguments, as the compiler passes them, or for a single one. */
    static Stream<Arguments> counted() {
        return Stream.of(
                arguments(new double[][] {{1, 2}, {3, 4}}, 1),
                arguments(new String[] {"ab", "cd"}, 1),
                arguments(new Double[] {1.0, 2.0}, 1),
                arguments(new Object[] {new double[] {1, 2}}, 1),
                arguments(null, 1),
                arguments(new Object[0], 0),
                arguments(new Object[10], 10),
                arguments(new Object[11], 11),
                arguments(new Object[40], 40),
                arguments(new NVArray[] {NVNumericArray.of(1.0), new NVJavaObjectRef("x")}, 2));
    }

    @ParameterizedTest
    @MethodSource("counted")
    void takesOneArgumentOrAList(Object[] passed, int count) {
        assertEquals(count, showcase.call("count", 1, passed)[0].asNumeric().doubleValue());
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

    @ParameterizedTest
    @ValueSource(strings = {"fail_deep", "fail_in_call", "fail_standard"})
    void tellsTheStackAndIdentifierOfAFailure(String function) {
        Object[] given = function.equals("fail_standard") ? new Object[0] : new Object[] {"as asked"};
        NVException failure = assertThrows(NVException.class, () -> showcase.call1(function, given));
        List<String> stack = failure.getNativeStack();

        assertEquals(given.length == 0 ? "" : "showcase:asked", failure.getIdentifier());
        assertTrue(stack.stream().allMatch(line -> line.startsWith("at ")), failure.toString());
        if (function.equals("fail_deep")) {
            assertTrue(failure.getMessage().contains("as asked"), failure.getMessage());
            assertTrue(stack.get(0).contains("innermost") && stack.get(1).contains("middle"), stack.toString());
            assertTrue(failure.getStackTrace()[0].getLineNumber() > 0);
        }
    }

    @ParameterizedTest
    @CsvSource(
            delimiter = '|',
            value = {
                "at innermost (failing.cpp:12) | native.innermost(failing.cpp:12)",
                "at fail_deep                  | native.fail_deep(Unknown Source)",
                "solve (a b.cpp:3)             | native.solve(a b.cpp:3)",
                "at f (x.cpp:99999999999)      | native.f(x.cpp)",
            })
    void putsNativeFramesInFrontOfJavaFrames(String line, String frame) {
        String[] lines = {line, "at b (f.cpp:2)", "identifier solver:diverged", "not counted"};
        NVException failure = new NVException("failed", lines, 3);
        StackTraceElement[] trace = failure.getStackTrace();

        assertEquals(frame, trace[0].toString());
        assertEquals("b", trace[1].getMethodName());
        assertEquals(CallTest.class.getName(), trace[2].getClassName());
        assertEquals(List.of(line, lines[1]), failure.getNativeStack());
        assertEquals("solver:diverged", failure.getIdentifier());
        assertThrows(UnsupportedOperationException.class, () -> failure.getNativeStack().add("c"));
    }

    /** The lambda calls the component itself, and fails in the end. */
    @Test
    void failsWithTheTextOfAnExceptionInALambda() {
        DoubleUnaryOperator failing = x -> {
            double value = showcase.call1("parabola", x).asNumeric().doubleValue();
            throw new IllegalStateException("no more than " + value);
        };
        NVException failure = assertThrows(NVException.class, () -> showcase.call1("minimize", failing, 0.0, 1.0));
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
