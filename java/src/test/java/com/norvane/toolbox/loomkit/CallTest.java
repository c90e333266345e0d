package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.params.provider.Arguments.arguments;

import java.io.IOException;
import java.util.List;
import java.util.Map;
import java.util.Random;
import java.util.function.DoubleUnaryOperator;
import java.util.stream.Stream;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;

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

    private static double[][] random(Random random, int rows, int columns) {
        double[][] matrix = new double[rows][];
        for (int i = 0; i < rows; i++) {
            matrix[i] = random.doubles(columns, -1, 1).toArray();
        }
        return matrix;
    }

    private static double[][] product(double[][] a, double[][] b) {
        double[][] c = new double[a.length][b[0].length];
        for (int i = 0; i < a.length; i++) {
            for (int j = 0; j < b[0].length; j++) {
                for (int k = 0; k < b.length; k++) {
                    c[i][j] += a[i][k] * b[k][j];
                }
            }
        }
        return c;
    }

    private static void assertNear(double[][] expected, double[][] actual, double tolerance) {
        assertEquals(expected.length, actual.length);
        for (int i = 0; i < expected.length; i++) {
            assertArrayEquals(expected[i], actual[i], tolerance, "row " + i);
        }
    }

    @Test
    void solvesASystem() {
        Random random = new Random(7);
        double[][] a = random(random, 8, 8);
        double[][] x = random(random, 8, 2);
        double[][] solved = linalg.call1("solve", a, product(a, x)).asNumeric().toDoubleArray();

        assertNear(x, solved, 1e-9);
    }

    @Test
    void givesSeveralResults() {
        double[][] a = random(new Random(8), 5, 3);
        NVArray[] factors = linalg.call("svd", 3, a, "econ");
        double[][] u = factors[0].asNumeric().toDoubleArray();
        double[][] s = factors[1].asNumeric().toDoubleArray();
        double[][] v = factors[2].asNumeric().toDoubleArray();
        double[][] transposed = new double[3][3];
        for (int i = 0; i < 9; i++) {
            transposed[i / 3][i % 3] = v[i % 3][i / 3];
        }

        assertNear(a, product(product(u, s), transposed), 1e-12);
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
    void passesJavaObjectsThrough() {
        Object object = new Object();
        assertSame(object, ((NVJavaObjectRef) showcase.call1("same", object)).get());
        assertSame("text", ((NVJavaObjectRef) showcase.call1("same", new NVJavaObjectRef("text"))).get());
    }

    @Test
    void minimisesALambda() {
        DoubleUnaryOperator objective = x -> (x - 1) * (x - 1) + 3;
        NVArray[] minimum = showcase.call("minimize", 3, objective, -4.0, 6.0);

        assertEquals(1, minimum[0].asNumeric().doubleValue(), 1e-6);
        assertEquals(3, minimum[1].asNumeric().doubleValue(), 1e-12);
        assertTrue(minimum[2].asNumeric().doubleValue() > 2);
    }

    @Test
    void callsFunctionsThroughHandles() {
        try (NVFunctionHandle parabola = showcase.call1("handle_of", "parabola").asFunction()) {
            assertEquals("parabola", parabola.name());
            assertEquals(5, showcase.call1("apply", parabola, 4.0).asNumeric().doubleValue());
            assertEquals(2, showcase.call("minimize", 1, parabola, 0.0, 9.0)[0].asNumeric().doubleValue(), 1e-6);
            assertEquals(parabola, parabola.duplicate());
        }
    }

    @Test
    void tellsTheStackOfAFailure() {
        NVException failure = assertThrows(NVException.class, () -> showcase.call1("fail_deep", "as asked"));
        List<String> stack = failure.getNativeStack();

        assertTrue(failure.getMessage().contains("as asked"), failure.getMessage());
        assertTrue(stack.size() >= 3, stack.toString());
        assertTrue(stack.get(0).contains("innermost"), stack.toString());
        assertTrue(stack.get(1).contains("middle"), stack.toString());
        assertEquals("innermost", failure.getStackTrace()[0].getMethodName());
        assertTrue(failure.getStackTrace()[0].getLineNumber() > 0);
        assertThrows(NVException.class, () -> showcase.call1("fail_standard"));
    }

    @Test
    void failsWithTheTextOfAnExceptionInALambda() {
        DoubleUnaryOperator failing =
                x -> {
                    throw new IllegalStateException("no value at " + x);
                };
        NVException failure =
                assertThrows(NVException.class, () -> showcase.call1("minimize", failing, 0.0, 1.0));
        assertTrue(failure.getMessage().contains("no value at"), failure.getMessage());
        assertTrue(failure.getMessage().contains("IllegalStateException"), failure.getMessage());
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
    void callsItselfFromALambda() {
        DoubleUnaryOperator nested =
                x -> showcase.call1("parabola", x).asNumeric().doubleValue();
        assertEquals(2, showcase.call("minimize", 1, nested, -10.0, 10.0)[0].asNumeric().doubleValue(), 1e-6);
    }

    @Test
    void letsAFailureInUserDataThroughAsItIs() {
        UnsupportedOperationException failure = new UnsupportedOperationException("asked for");
        Object teller =
                new Object() {
                    @Override
                    public String toString() {
                        throw failure;
                    }
                };
        Object[] arguments = {new Object[] {"text", teller}};
        assertSame(
                failure,
                assertThrows(UnsupportedOperationException.class, () -> showcase.call("count", 1, arguments)));
    }

    @Test
    void tellsItsFunctions() {
        Map<String, String> functions = linalg.functions();
        assertTrue(functions.keySet().containsAll(List.of("solve", "lstsq", "svd", "eig", "inv", "norm")));
        assertTrue(linalg.help("inv").contains("inverse"), linalg.help("inv"));
        assertThrows(IllegalArgumentException.class, () -> linalg.help("none"));
        assertThrows(UnsupportedOperationException.class, functions::clear);
    }
}
