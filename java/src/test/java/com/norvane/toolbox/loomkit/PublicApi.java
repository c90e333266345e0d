package com.norvane.toolbox.loomkit;

import java.io.*;
import java.lang.reflect.*;
import java.nio.file.Path;
import java.util.*;
import java.util.concurrent.Callable;
import java.util.function.DoubleUnaryOperator;

/** The public classes and methods, with objects to call them on and values to call them with. */
final class PublicApi {
    private static final List<Class<?>> PUBLIC_CLASSES =
            List.of(
                    Loomkit.class, Component.class, ComponentDescription.class, ComponentOptions.class, NVArray.class,
                    NVBuiltinArray.class, NVNumericArray.class, NVLogicalArray.class, NVCharArray.class, NVCellArray.class,
                    NVStructArray.class, NVFunctionHandle.class, NVJavaObjectRef.class, NVException.class,
                    ClassId.class, Complexity.class, com.norvane.extern.java.NVCellArray.class,
                    com.norvane.extern.java.NVStructArray.class);

    /** What a call may end in; anything else is a fault of ours. */
    private static final List<Class<? extends Throwable>> REFUSALS =
            List.of(
                    IllegalArgumentException.class, NullPointerException.class, IndexOutOfBoundsException.class,
                    IllegalStateException.class, UnsupportedOperationException.class, NVException.class,
                    IOException.class);

    /** The receiver of a method, fresh for each call. */
    private static final List<Callable<Object>> RECEIVERS =
            List.of(
                    () -> NVNumericArray.complex(new double[][] {{1, 2}}, new double[][] {{3, 4}}),
                    () -> NVNumericArray.zeros(ClassId.UINT8, Complexity.REAL, 2, 3, 2),
                    () -> NVNumericArray.zeros(),
                    () -> NVNumericArray.sparse(new double[][] {{1, 0}, {0, 2}}),
                    () -> NVLogicalArray.of(new boolean[] {true, false}),
                    () -> NVLogicalArray.sparse(new boolean[][] {{true, false}}),
                    () -> NVCharArray.of("ab", "c"),
                    () -> NVCellArray.row(1.0, "two", NVCellArray.row(3)),
                    () -> NVStructArray.create(new int[] {1, 2}, "field", "other"),
                    () -> new NVJavaObjectRef("object"),
                    () -> new NVException("failed"),
                    ComponentOptions::new,
                    () -> TestComponents.open("showcase"),
                    () -> Component.describe(TestComponents.archive("showcase")),
                    () -> handleOf("parabola"),
                    () -> ClassId.INT8,
                    () -> Complexity.REAL,
                    () -> com.norvane.extern.java.NVCellArray.row(1, "a"),
                    () -> com.norvane.extern.java.NVStructArray.of(Map.of("field", 1)));

    /** A public method or constructor, with what makes the object to call it on; null where it needs none. */
    static final class Operation {
        final Executable callee;
        final Callable<Object> receiver;

        private Operation(Executable callee, Callable<Object> receiver) {
            this.callee = callee;
            this.receiver = receiver;
        }

        /** The first value of each parameter's type, which mostly makes sense. */
        Object[] usualArguments(Map<Class<?>, Object[]> values) {
            return Arrays.stream(callee.getParameterTypes()).map(type -> values.get(type)[0]).toArray();
        }

        Object call(Object target, Object[] arguments) throws ReflectiveOperationException {
            return callee instanceof Method
                    ? ((Method) callee).invoke(target, arguments)
                    : ((Constructor<?>) callee).newInstance(arguments);
        }
    }

    private PublicApi() {}

    /** Constructors and static methods of each public class, then the methods of each receiver. */
    static List<Operation> operations() throws Exception {
        List<Operation> all = new ArrayList<>();
        for (Class<?> type : PUBLIC_CLASSES) {
            for (Constructor<?> constructor : type.getConstructors()) {
                all.add(new Operation(constructor, () -> null));
            }
            addMethods(type.getDeclaredMethods(), true, () -> null, all);
        }
        for (Callable<Object> receiver : RECEIVERS) {
            Object sample = receiver.call();
            addMethods(sample.getClass().getMethods(), false, receiver, all);
            close(sample);
        }
        return all;
    }

    private static void addMethods(Method[] methods, boolean ofClass, Callable<Object> receiver, List<Operation> all) {
        for (Method method : methods) {
            if (isPublicApi(method) && Modifier.isStatic(method.getModifiers()) == ofClass) {
                all.add(new Operation(method, receiver));
            }
        }
    }

    /** Whether an outcome, null for none, says what was wrong with a call. */
    static boolean isStated(Throwable outcome) {
        return outcome == null || REFUSALS.stream().anyMatch(refusal -> refusal.isInstance(outcome));
    }

    private static Object handleOf(String function) throws IOException {
        try (Component showcase = TestComponents.open("showcase")) {
            return showcase.call1("handle_of", function);
        }
    }

    /** For each type of parameter: first a value that mostly makes sense, then others. */
    static Map<Class<?>, Object[]> values() {
        NVCellArray closed = NVCellArray.row(1.0);
        closed.close();
        DoubleUnaryOperator lambda = x -> x;
        InputStream failing =
                new InputStream() {
                    @Override
                    public int read() throws IOException {
                        throw new IOException("unplugged");
                    }
                };
        Map<Class<?>, Object[]> map = new HashMap<>();
        map.put(Object.class, new Object[] {
            new double[] {1, 2}, null, new Object(), "text", 7, 'c', true, Double.NaN, new double[][] {{1}, null},
            new Object[0], new Object[] {null, 1}, new Object[] {1.0, "x"}, new boolean[3], new String[] {null},
            new double[0][][], JavaDataTest.containsItself(), JavaDataTest.nested(300), JavaDataTest.cellsOfCells(60),
            JavaDataTest.sharedRows(1 << 16, 1 << 16), closed, new NVJavaObjectRef(1), lambda, ClassId.CELL});
        map.put(int.class, new Object[] {1, 0, -1, 3, 70_000, Integer.MIN_VALUE, Integer.MAX_VALUE});
        map.put(long.class, new Object[] {1L, Long.MIN_VALUE});
        map.put(double.class, new Object[] {1.0, Double.NaN, -1e300});
        map.put(boolean.class, new Object[] {true, false});
        map.put(char.class, new Object[] {'a', '\0', '\ud800'});
        map.put(int[].class, new Object[] {
            new int[] {1, 2}, null, new int[0], new int[] {0, 1}, new int[] {-1}, new int[] {1, 1, 1},
            new int[] {Integer.MIN_VALUE, 1}, new int[] {Integer.MAX_VALUE, Integer.MAX_VALUE},
            new int[] {1 << 16, 1 << 16}, new int[] {0, 1 << 20, 1 << 20}, new int[300]});
        map.put(double[].class, new Object[] {new double[] {1, 2}, null, new double[0], new double[7]});
        map.put(double[][].class, new Object[] {
            new double[][] {{1, 2}}, null, new double[0][], new double[][] {null}, new double[][] {{1}, {}, {2, 3}},
            JavaDataTest.sharedRows(1 << 16, 1 << 16)});
        map.put(boolean[].class, new Object[] {new boolean[2], null, new boolean[0], new boolean[9]});
        map.put(boolean[][].class, new Object[] {new boolean[1][2], null, new boolean[][] {null, {true}}});
        map.put(char[].class, new Object[] {new char[2], null, new char[0], new char[9]});
        map.put(char[][].class, new Object[] {new char[1][2], null, new char[][] {null, {'x'}}});
        map.put(byte[].class, new Object[] {NVNumericArray.of(1.0).serialize(), null, new byte[0], new byte[99]});
        map.put(String.class, new Object[] {"field", null, "", "none", "\0", "\ud800", "x".repeat(100_000)});
        map.put(String[].class, new Object[] {
            new String[] {"a", "b"}, null, new String[0], new String[] {null}, new String[] {"a", "a"},
            new String[] {"", "\0"}});
        map.put(Object[].class, new Object[] {
            new Object[] {1.0}, null, new Object[0], new Object[] {null, closed}, new Object[] {lambda},
            new Object[] {JavaDataTest.containsItself()}, new Object[1000]});
        map.put(Object[][].class, new Object[] {
            new Object[][] {{1}}, null, new Object[][] {null}, new Object[][] {{1}, {}}});
        map.put(Map.class, new Object[] {
            Map.of("a", 1), null, Map.of(), Collections.singletonMap(null, 1), Map.of("", 1), Map.of("a", lambda)});
        map.put(Class.class, new Object[] {
            double[][].class, null, int.class, void.class, double[].class, String[][].class, Object[].class,
            boolean[][].class, Character[][].class});
        map.put(ClassId.class, withNull(ClassId.values()));
        map.put(Complexity.class, withNull(Complexity.values()));
        map.put(NVBuiltinArray.class, new Object[] {NVCharArray.of("x"), null, closed});
        map.put(com.norvane.extern.java.NVCellArray.class, new Object[] {
            JavaDataTest.cellsOfCells(2), null, JavaDataTest.cellsOfCells(60),
            com.norvane.extern.java.NVCellArray.row(lambda, closed)});
        map.put(com.norvane.extern.java.NVStructArray.class, new Object[] {
            com.norvane.extern.java.NVStructArray.of(Map.of("a", 1)), null,
            com.norvane.extern.java.NVStructArray.of(Map.of("a", lambda))});
        map.put(Path.class, new Object[] {TestComponents.archive("showcase"), null, Path.of(""), Path.of("none")});
        map.put(InputStream.class, new Object[] {new ByteArrayInputStream(new byte[99]), null, failing});
        map.put(PrintStream.class, new Object[] {new PrintStream(new ByteArrayOutputStream()), null});
        map.put(ComponentOptions.class, new Object[] {new ComponentOptions(), null});
        return map;
    }

    private static Object[] withNull(Object[] all) {
        return Arrays.copyOf(all, all.length + 1, Object[].class);
    }

    /** The bridge of a comparison casts its argument, as that of any class does. */
    private static boolean isPublicApi(Method method) {
        boolean ours = method.getDeclaringClass().getName().startsWith("com.norvane.");
        boolean cast = method.isBridge() && method.getName().equals("compareTo");
        return ours && !cast && Modifier.isPublic(method.getModifiers());
    }

    static void close(Object value) throws Exception {
        if (value instanceof Object[]) {
            for (Object element : (Object[]) value) {
                close(element);
            }
        } else if (value instanceof AutoCloseable && !(value instanceof PrintStream)) {
            ((AutoCloseable) value).close();
        }
    }
}
