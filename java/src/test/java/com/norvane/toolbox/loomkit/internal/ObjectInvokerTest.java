package com.norvane.toolbox.loomkit.internal;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.params.provider.Arguments.arguments;

import java.util.List;
import java.util.function.BiFunction;
import java.util.function.DoubleUnaryOperator;
import java.util.function.Function;
import java.util.function.IntPredicate;
import java.util.function.ToDoubleFunction;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;

class ObjectInvokerTest {
    /** Takes each kind of parameter that a value can be converted to. */
    public static class Taker {
        public String integer(int value) {
            return "int " + value;
        }

        public String flag(boolean value) {
            return "boolean " + value;
        }

        public String unit(char value) {
            return "char " + value;
        }

        public String vector(double[] values) {
            return "vector " + values.length;
        }

        public String matrix(double[][] rows) {
            return "matrix " + rows.length + " " + rows[0].length;
        }

        public String two(String text, long count) {
            return text + count;
        }

        public void nothing() {}
    }

    /** Not public itself, so that its method is callable through its interface only. */
    private static final class Hidden implements Function<String, Integer> {
        @Override
        public Integer apply(String text) {
            return text.length();
        }
    }

    static Stream<Arguments> calls() {
        Taker taker = new Taker();
        DoubleUnaryOperator square = x -> x * x;
        ToDoubleFunction<double[]> sum = values -> values[0] + values[1];
        BiFunction<Double, Double, Double> add = Double::sum;
        IntPredicate even = value -> value % 2 == 0;
        return Stream.of(
                arguments(taker, "integer", List.of(3.0), "int 3"),
                arguments(taker, "flag", List.of(true), "boolean true"),
                arguments(taker, "unit", List.of("x"), "char x"),
                arguments(taker, "vector", List.of(1.0), "vector 1"),
                arguments(taker, "vector", List.of(new double[] {1, 2}), "vector 2"),
                arguments(taker, "matrix", List.of(new double[] {1, 2}), "matrix 1 2"),
                arguments(taker, "matrix", List.of(7.0), "matrix 1 1"),
                arguments(taker, "two", List.of("n", 4.0), "n4"),
                arguments(square, "applyAsDouble", List.of(3.0), 9.0),
                arguments(sum, "applyAsDouble", List.of(new double[] {1, 2}), 3.0),
                arguments(add, "apply", List.of(1.0, 2.0), 3.0),
                arguments(even, "test", List.of(4.0), true),
                arguments(new Hidden(), "apply", List.of("four"), 4),
                arguments("text", "length", List.of(), 4));
    }

    @ParameterizedTest
    @MethodSource("calls")
    void findsTheMethodAndConverts(Object target, String method, List<Object> values, Object expected)
            throws Throwable {
        assertEquals(expected, ObjectInvoker.invoke(target, method, values.toArray()));
    }

    static Stream<Arguments> impossibleCalls() {
        return Stream.of(
                arguments("integer", new Object[] {1.5}),
                arguments("integer", new Object[] {1e10}),
                arguments("integer", new Object[] {Double.NaN}),
                arguments("integer", new Object[] {null}),
                arguments("integer", new Object[] {"1"}),
                arguments("flag", new Object[] {1.0}),
                arguments("unit", new Object[] {"two"}),
                arguments("two", new Object[] {"n"}),
                arguments("missing", new Object[] {}));
    }

    @ParameterizedTest
    @MethodSource("impossibleCalls")
    void refusesWhatNoMethodTakes(String method, Object[] values) {
        assertThrows(NoSuchMethodException.class, () -> ObjectInvoker.invoke(new Taker(), method, values));
    }

    @Test
    void givesNullForVoidAndPassesNullOn() throws Throwable {
        assertNull(ObjectInvoker.invoke(new Taker(), "nothing", null));
        assertEquals(false, ObjectInvoker.invoke("text", "equals", new Object[] {null}));
    }

    @Test
    void letsTheExceptionOfTheMethodThroughAsItIs() {
        IllegalStateException failure = new IllegalStateException("asked for");
        DoubleUnaryOperator failing =
                x -> {
                    throw failure;
                };
        Object[] arguments = {1.0};

        assertSame(
                failure,
                assertThrows(
                        IllegalStateException.class,
                        () -> ObjectInvoker.invoke(failing, "applyAsDouble", arguments)));
    }
}
