package com.norvane.toolbox.loomkit.internal;

import static org.junit.jupiter.api.Assertions.*;
import static org.junit.jupiter.params.provider.Arguments.arguments;

import java.util.Collections;
import java.util.List;
import java.util.function.*;
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
                arguments("text", "length", List.of(), 4),
                arguments("text", "equals", Collections.singletonList(null), false));
    }

    @ParameterizedTest
    @MethodSource("calls")
    void findsTheMethodAndConverts(Object target, String method, List<Object> values, Object expected)
            throws Throwable {
        assertEquals(expected, ObjectInvoker.invoke(target, method, values.toArray()));
    }

    static Stream<Arguments> impossibleCalls() {
        return Stream.of(
                arguments("integer", 1.5),
                arguments("integer", 1e10),
                arguments("integer", Double.NaN),
                arguments("integer", null),
                arguments("integer", "1"),
                arguments("flag", 1.0),
                arguments("unit", "two"),
                arguments("two", "n"),
                arguments("missing", 1.0));
    }

    @ParameterizedTest
    @MethodSource("impossibleCalls")
    void refusesWhatNoMethodTakes(String method, Object value) {
        Object[] values = {value};
        assertThrows(NoSuchMethodException.class, () -> ObjectInvoker.invoke(new Taker(), method, values));
    }

    @Test
    void letsTheExceptionOfTheMethodThroughAsItIs() throws Throwable {
        IllegalStateException failure = new IllegalStateException("asked for");
        Runnable failing = () -> {
            throw failure;
        };
        assertSame(
                failure, assertThrows(Exception.class, () -> ObjectInvoker.invoke(failing, "run", new Object[0])));
        assertNull(ObjectInvoker.invoke((Runnable) () -> {}, "run", null));
    }
}
