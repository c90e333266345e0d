package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertTrue;

import com.norvane.toolbox.loomkit.testing.ChildProcess;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.PrintStream;
import java.lang.reflect.Constructor;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.concurrent.Callable;
import java.util.function.DoubleUnaryOperator;
import org.junit.jupiter.api.Test;

/**
 * Calls every public method where little stack is left: far down in a recursion, and on a thread of the smallest stack
 * that Java grants. A call succeeds, says what was wrong, or ends in a StackOverflowError; afterwards all works as before.
 */
class StackEndTest {
    /** Runs in a process of its own. Each call is made with all classes in place, as in a program that runs. */
    public static final class Program {
        private static final int DEPTHS = 100;
        private static final long SMALLEST_STACK = 136 << 10;
        private static final long STACK = 400 << 10;

        private static final Map<Class<?>, Object[]> VALUES = PublicApi.values();
        private static final Set<String> FAULTS = new LinkedHashSet<>();
        private static int reached;

        private static final class Operation {
            private final String name;
            private final Callable<?> use;

            Operation(String name, Callable<?> use) {
                this.name = name;
                this.use = use;
            }
        }

        /** Tells each operation before it is used, so that the last one is known when the process dies. */
        public static void main(String[] args) throws Exception {
            PrintStream told = System.out;
            System.setOut(new PrintStream(new ByteArrayOutputStream()));
            System.setErr(new PrintStream(new ByteArrayOutputStream()));
            List<Operation> operations = new ArrayList<>();
            addPublicMethods(operations);
            addDeepOnes(operations);
            for (Operation operation : operations) {
                if (args.length > 0 && !operation.name.contains(args[0])) {
                    continue;
                }
                told.println(operation.name);
                Class<?> before = kindOf(outcomeOf(operation.use));
                on(SMALLEST_STACK, () -> check(operation, outcomeOf(operation.use)));
                on(STACK, () -> useNearTheEnd(operation));
                Throwable after = outcomeOf(operation.use);
                if (kindOf(after) != before) {
                    FAULTS.add(operation.name + " afterwards: " + after);
                }
            }
            told.println("faults: " + FAULTS + " in " + (operations.size() > 250 ? "all" : "few") + " operations");
            System.exit(0);
        }

        private static void on(long stack, Runnable run) throws InterruptedException {
            Thread thread = new Thread(null, run, "little stack", stack);
            thread.start();
            thread.join();
        }

        private static void useNearTheEnd(Operation operation) {
            reached = 0;
            below(Integer.MAX_VALUE, () -> null);
            int deepest = reached;
            for (int i = 0; i < DEPTHS; i++) {
                check(operation, below(deepest - i * (deepest / (4 * DEPTHS)), operation.use));
            }
        }

        /** Uses it so many frames further down, or as far down as there is stack. */
        private static Throwable below(int frames, Callable<?> use) {
            try {
                return descend(frames, use);
            } catch (StackOverflowError noRoom) {
                return noRoom;
            }
        }

        private static Throwable descend(int frames, Callable<?> use) {
            reached++;
            return frames == 0 ? outcomeOf(use) : descend(frames - 1, use);
        }

        private static Throwable outcomeOf(Callable<?> use) {
            try {
                PublicApi.close(use.call());
                return null;
            } catch (InvocationTargetException wrapper) {
                return wrapper.getCause();
            } catch (Throwable failure) {
                return failure;
            }
        }

        private static Class<?> kindOf(Throwable outcome) {
            return outcome == null ? null : outcome.getClass();
        }

        private static void check(Operation operation, Throwable outcome) {
            boolean stated =
                    outcome == null
                            || outcome instanceof StackOverflowError
                            || PublicApi.REFUSALS.stream().anyMatch(refusal -> refusal.isInstance(outcome));
            if (!stated) {
                FAULTS.add(operation.name + ": " + outcome);
            }
        }

        private static Object[] argumentsOf(Class<?>[] types) {
            return Arrays.stream(types).map(type -> VALUES.get(type)[0]).toArray();
        }

        private static void addPublicMethods(List<Operation> operations) throws Exception {
            for (Class<?> type : PublicApi.PUBLIC_CLASSES) {
                for (Constructor<?> constructor : type.getConstructors()) {
                    Object[] arguments = argumentsOf(constructor.getParameterTypes());
                    operations.add(new Operation(constructor.toString(), () -> constructor.newInstance(arguments)));
                }
                for (Method method : type.getDeclaredMethods()) {
                    if (PublicApi.isPublicApi(method) && Modifier.isStatic(method.getModifiers())) {
                        operations.add(operation(method, null));
                    }
                }
            }
            Set<String> added = new LinkedHashSet<>();
            for (Callable<Object> receiver : PublicApi.RECEIVERS) {
                for (Method method : receiver.call().getClass().getMethods()) {
                    if (!PublicApi.isPublicApi(method) || Modifier.isStatic(method.getModifiers())) {
                        continue;
                    }
                    Operation one = operation(method, receiver.call());
                    if (added.add(one.name)) {
                        operations.add(one);
                    }
                }
            }
        }

        private static Operation operation(Method method, Object receiver) {
            Object[] arguments = argumentsOf(method.getParameterTypes());
            boolean sparse = receiver instanceof NVBuiltinArray && ((NVBuiltinArray) receiver).isSparse();
            String on = receiver == null ? "" : " on " + (sparse ? "sparse " : "") + receiver.getClass().getSimpleName();
            return new Operation(method + on, () -> method.invoke(receiver, arguments));
        }

        /** What walks over nested data, or comes back to Java. */
        private static void addDeepOnes(List<Operation> operations) throws IOException {
            com.norvane.extern.java.NVCellArray plain = com.norvane.extern.java.NVCellArray.row(1.0);
            for (int level = 1; level < ValueTree.MAX_LEVELS; level++) {
                plain = com.norvane.extern.java.NVCellArray.row(plain);
            }
            Object data = plain;
            NVBuiltinArray cell = NVBuiltinArray.of(data);
            NVBuiltinArray twin = NVBuiltinArray.of(data);
            byte[] form = cell.serialize();
            int[] extents = new int[255];
            Arrays.fill(extents, 1);
            NVNumericArray cube = NVNumericArray.zeros(extents);
            Component showcase = TestComponents.open("showcase");
            showcase.setOutput(new PrintStream(new ByteArrayOutputStream()));
            DoubleUnaryOperator lambda = x -> x * x;
            Object[][] named = {
                {"deep cell", (Callable<?>) () -> NVBuiltinArray.of(data)},
                {"deep nesting", (Callable<?>) () -> NVBuiltinArray.of(JavaDataTest.nested(255))},
                {"store deep", (Callable<?>) () -> {
                    NVCellArray.row(1.0).setAt(0, cell);
                    return null;
                }},
                {"deep toObject", (Callable<?>) cell::toObject},
                {"deep toString", (Callable<?>) cell::toString},
                {"deep duplicate", (Callable<?>) cell::duplicate},
                {"deep serialize", (Callable<?>) cell::serialize},
                {"deep equals", (Callable<?>) () -> cell.equals(twin)},
                {"deep hashCode", (Callable<?>) cell::hashCode},
                {"deep deserialize", (Callable<?>) () -> NVBuiltinArray.deserialize(form)},
                {"many dimensions", (Callable<?>) cube::toObject},
                {"text of many dimensions", (Callable<?>) cube::toString},
                {"call with deep", (Callable<?>) () -> showcase.call("same", 1, cell)},
                {"call with deep data", (Callable<?>) () -> showcase.call("same", 1, data)},
                {"call back", (Callable<?>) () -> showcase.call("minimize", 1, lambda, -1.0, 2.0)},
                {"print", (Callable<?>) () -> showcase.call("say", 0, "text")},
                {"print from a thread", (Callable<?>) () -> showcase.call("say_from_thread", 0, "text", 2.0)},
                {"fail", (Callable<?>) () -> showcase.call("fail_in_call", 0, "as asked")},
                {"gather", (Callable<?>) () -> showcase.call("gather", 1, cell, lambda, "text")},
            };
            for (Object[] one : named) {
                operations.add(new Operation((String) one[0], (Callable<?>) one[1]));
            }
        }
    }

    @Test
    void livesWithLittleStack() throws Exception {
        ChildProcess child =
                ChildProcess.run(
                        Program.class,
                        List.of(
                                "-Xint",
                                "-Dloomkit.native.dir=" + System.getProperty("loomkit.native.dir"),
                                "-Dloomkit.test.components=" + System.getProperty("loomkit.test.components")));
        String last = child.output.substring(Math.max(0, child.output.length() - 4000));
        assertTrue(last.endsWith("faults: [] in all operations\n"), "exit code " + child.exitCode + ": " + last);
    }
}
