package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.concurrent.Callable;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.function.Supplier;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;
import org.junit.jupiter.params.provider.ValueSource;

class ArrayLifeTest {
    private static final Set<String> WORK_WHEN_CLOSED =
            Set.of("close", "isClosed", "asNumeric", "asChar", "asLogical", "asCell", "asStruct", "asFunction");

    static Stream<Supplier<NVBuiltinArray>> arrays() {
        return Stream.of(
                () -> NVNumericArray.complex(new double[][] {{1}}, new double[][] {{1}}),
                () -> NVNumericArray.sparse(new double[][] {{1}}),
                () -> NVLogicalArray.of(true),
                () -> NVCharArray.of("c"),
                () -> NVCellArray.row(1.0),
                () -> NVStructArray.of(Map.of("field", 1.0)));
    }

    /** Something of each type that methods of arrays take. */
    private static final Map<Class<?>, Object> SAMPLES =
            Map.ofEntries(
                    Map.entry(int.class, 0),
                    Map.entry(int[].class, new int[] {1, 1}),
                    Map.entry(double.class, 1.0),
                    Map.entry(long.class, 1L),
                    Map.entry(boolean.class, true),
                    Map.entry(boolean[].class, new boolean[1]),
                    Map.entry(char.class, 'c'),
                    Map.entry(char[].class, new char[1]),
                    Map.entry(String.class, "field"),
                    Map.entry(Object.class, new double[1]),
                    Map.entry(Class.class, double[][].class));

    private static Object[] samples(Method method, NVBuiltinArray other) {
        boolean comparison = method.getName().equals("compareTo");
        return Arrays.stream(method.getParameterTypes())
                .map(type -> comparison || type == NVBuiltinArray.class ? other : SAMPLES.get(type))
                .toArray();
    }

    @ParameterizedTest
    @MethodSource("arrays")
    void refusesAllUseAfterClose(Supplier<NVBuiltinArray> making) throws IllegalAccessException {
        NVBuiltinArray array = making.get();
        NVBuiltinArray open = making.get();
        array.close();
        array.close();
        assertTrue(array.isClosed());
        int tried = 0;
        for (Method method : array.getClass().getMethods()) {
            boolean own = NVArray.class.isAssignableFrom(method.getDeclaringClass());
            if (!own || Modifier.isStatic(method.getModifiers()) || WORK_WHEN_CLOSED.contains(method.getName())) {
                continue;
            }
            try {
                method.invoke(array, samples(method, open));
                assertEquals("equals", method.getName(), method + " worked");
            } catch (InvocationTargetException wrapper) {
                boolean flatType = method.getName().startsWith("toFlat") && method.getParameterCount() == 1;
                Class<?> expected = flatType ? IllegalArgumentException.class : IllegalStateException.class;
                assertEquals(expected, wrapper.getCause().getClass(), method.toString());
                tried++;
            }
        }
        assertTrue(tried > 20, "only " + tried + " methods were tried");
        assertThrows(IllegalStateException.class, () -> array.equals(open));
        assertThrows(IllegalStateException.class, () -> open.equals(array));
        assertThrows(IllegalStateException.class, () -> NVCellArray.row(array));
        open.close();
    }

    @Test
    void closesInAnyOrderWithWhatSharesData() {
        NVCellArray cell = NVCellArray.row(1.0, "two");
        NVArray element = cell.getAt(0);
        NVCellArray shared = cell.sharedCopy();
        cell.close();
        assertEquals(1, element.asNumeric().doubleValue());
        shared.setAt(0, 5.0);
        shared.close();
        assertEquals(1, element.asNumeric().doubleValue());
        element.close();
    }

    /** Closing at any moment ends in a value or in an IllegalStateException, on all threads. */
    @ParameterizedTest
    @ValueSource(ints = {1, 2, 3})
    void survivesACloseDuringUse(int ignoredRound) throws Exception {
        ExecutorService threads = Executors.newFixedThreadPool(4);
        for (int round = 0; round < 200; round++) {
            NVCellArray cell = NVCellArray.row(new double[100], "text");
            CountDownLatch start = new CountDownLatch(4);
            List<Callable<Boolean>> users = new ArrayList<>();
            users.add(() -> used(start, cell::hashCode));
            users.add(() -> used(start, () -> cell.getAt(0).asNumeric().toFlatDoubleArray()));
            users.add(() -> used(start, () -> cell.setAt(1, "changed")));
            users.add(() -> used(start, cell::close));
            for (Future<Boolean> user : threads.invokeAll(users)) {
                user.get();
            }
            assertTrue(cell.isClosed());
        }
        threads.shutdown();
    }

    private static boolean used(CountDownLatch start, Runnable use) throws InterruptedException {
        start.countDown();
        start.await();
        try {
            use.run();
            return true;
        } catch (IllegalStateException closed) {
            assertEquals("the array is closed", closed.getMessage());
            return false;
        }
    }

    /** Writers and readers of one sparse array and one cell, whose native tables move under them. */
    @Test
    void serialisesWritersOfSparseArraysAndCells() throws Exception {
        ExecutorService threads = Executors.newFixedThreadPool(4);
        try (NVNumericArray sparse = NVNumericArray.sparse(new int[0], new int[0], new double[0], 64, 64);
                NVCellArray cell = NVCellArray.empty(4)) {
            List<Callable<Void>> users = new ArrayList<>();
            for (int thread = 0; thread < 4; thread++) {
                int column = thread;
                users.add(
                        () -> {
                            for (int i = 1; i <= 64; i++) {
                                sparse.set(1.0, i, column * 16 + 1);
                                cell.setAt(column, new double[i]);
                                cell.getAt((column + 1) % 4).close();
                                sparse.toFlatDoubleArray();
                            }
                            return null;
                        });
            }
            for (Future<Void> user : threads.invokeAll(users)) {
                user.get();
            }
            assertEquals(4 * 64, sparse.numberOfNonZeros());
            for (int i = 0; i < 4; i++) {
                assertEquals(64, cell.getAt(i).asNumeric().numberOfElements());
            }
        }
        threads.shutdown();
    }
}
