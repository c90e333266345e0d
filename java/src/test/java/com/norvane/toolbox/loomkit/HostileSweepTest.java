package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.lang.reflect.Constructor;
import java.lang.reflect.Executable;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.Arrays;
import java.util.Map;
import java.util.Random;
import java.util.Set;
import java.util.TreeSet;
import java.util.concurrent.Callable;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;

/**
 * Calls every public method and constructor with values that make no sense: first each parameter in turn, then all of
 * them at random. A call gives a value or an exception that says what was wrong; it never ends the process.
 */
class HostileSweepTest {
    private static final long SEED = 20240811;
    private static final int RANDOM_ROUNDS = 25;

    private final Random random = new Random(SEED);
    private final Map<Class<?>, Object[]> values = PublicApi.values();
    private final Set<String> faults = new TreeSet<>();
    private int calls;

    @AfterEach
    void resetStreams() {
        Loomkit.setOutput(null);
        Loomkit.setErrorOutput(null);
    }

    @Test
    void everyCallGivesAValueOrSaysWhatWasWrong() throws Exception {
        for (Class<?> type : PublicApi.PUBLIC_CLASSES) {
            for (Constructor<?> constructor : type.getConstructors()) {
                sweep(constructor, () -> null);
            }
            for (Method method : type.getDeclaredMethods()) {
                if (PublicApi.isPublicApi(method) && Modifier.isStatic(method.getModifiers())) {
                    sweep(method, () -> null);
                }
            }
        }
        for (Callable<Object> receiver : PublicApi.RECEIVERS) {
            Object sample = receiver.call();
            for (Method method : sample.getClass().getMethods()) {
                if (PublicApi.isPublicApi(method) && !Modifier.isStatic(method.getModifiers())) {
                    sweep(method, receiver);
                }
            }
            PublicApi.close(sample);
        }
        assertEquals(Set.of(), faults, "seed " + SEED);
        assertTrue(calls > 5000, "only " + calls + " calls were made");
        assertEquals(2.5, NVNumericArray.of(2.5).doubleValue());
    }

    @Test
    void aClosedArrayRefusesAllUse() throws Exception {
        Set<String> working = Set.of("close", "isClosed", "asNumeric", "asChar", "asLogical", "asCell", "asStruct",
                "asFunction", "equals", "toString");
        for (Callable<Object> receiver : PublicApi.RECEIVERS) {
            Object array = receiver.call();
            if (!(array instanceof NVBuiltinArray)) {
                continue;
            }
            PublicApi.close(array);
            PublicApi.close(array);
            for (Method method : array.getClass().getMethods()) {
                if (PublicApi.isPublicApi(method) && !Modifier.isStatic(method.getModifiers())
                        && !working.contains(method.getName())) {
                    Throwable refusal =
                            assertThrows(
                                            InvocationTargetException.class,
                                            () -> method.invoke(array, usualOf(method)),
                                            method.toString())
                                    .getCause();
                    boolean ofType = method.getName().startsWith("toFlat") && method.getParameterCount() == 1;
                    Class<?> expected = ofType ? IllegalArgumentException.class : IllegalStateException.class;
                    assertEquals(expected, refusal.getClass(), method.toString());
                    calls++;
                }
            }
        }
        assertTrue(calls > 200, "only " + calls + " methods were tried");
    }

    private void sweep(Executable callee, Callable<Object> receiver) throws Exception {
        Class<?>[] types = callee.getParameterTypes();
        Object[] usual = usualOf(callee);
        call(callee, receiver.call(), usual);
        for (int i = 0; i < types.length; i++) {
            for (Object value : valuesOf(types[i], callee)) {
                Object[] arguments = usual.clone();
                arguments[i] = value;
                call(callee, receiver.call(), arguments);
            }
        }
        for (int round = 0; types.length > 1 && round < RANDOM_ROUNDS; round++) {
            Object[] arguments = Arrays.stream(types).map(type -> anyOf(valuesOf(type, callee))).toArray();
            call(callee, receiver.call(), arguments);
        }
    }

    private Object[] usualOf(Executable callee) {
        return Arrays.stream(callee.getParameterTypes()).map(type -> valuesOf(type, callee)[0]).toArray();
    }

    private Object[] valuesOf(Class<?> type, Executable callee) {
        Object[] known = values.get(type);
        assertTrue(known != null, "no values of type " + type.getTypeName() + " for " + callee);
        return known;
    }

    private Object anyOf(Object[] known) {
        return known[random.nextInt(known.length)];
    }

    private void call(Executable callee, Object receiver, Object[] arguments) throws Exception {
        calls++;
        try {
            PublicApi.close(
                    callee instanceof Method
                            ? ((Method) callee).invoke(receiver, arguments)
                            : ((Constructor<?>) callee).newInstance(arguments));
        } catch (InvocationTargetException wrapper) {
            check(callee, wrapper.getCause());
        } finally {
            PublicApi.close(receiver);
        }
    }

    /** Messages of the virtual machine itself, on a null that nobody looked for, begin like this. */
    private void check(Executable callee, Throwable thrown) {
        boolean stated = PublicApi.REFUSALS.stream().anyMatch(refusal -> refusal.isInstance(thrown));
        boolean explained = thrown.getMessage() != null && !thrown.getMessage().startsWith("Cannot ");
        if (!stated || !explained) {
            faults.add(callee + " threw " + thrown);
        }
    }
}
