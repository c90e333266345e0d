package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertTrue;

import com.norvane.toolbox.loomkit.testing.ChildProcess;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.PrintStream;
import java.lang.reflect.InvocationTargetException;
import java.util.*;
import java.util.concurrent.Callable;
import java.util.function.DoubleUnaryOperator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.condition.DisabledIfEnvironmentVariable;

/**
 * Calls every public method where little stack is left: far down in a recursion, and on a thread of the smallest stack
 * that Java grants. A call succeeds, says what was wrong, or ends in a StackOverflowError; afterwards all works as
 * before.
 */
class StackEndTest {
    /** Runs in a process of its own. Each call is made with all classes in place, as in a program that runs. */
    public static final class Program {
        private static final int DEPTHS = 100;
        private static final long SMALLEST_STACK = 136 << 10;
        private static final long STACK = 400 << 10;

        private static final Set<String> FAULTS = new LinkedHashSet<>();
        private static int reached;

        /** Tells each operation before it is used, so that the last one is known when the process dies. */
        public static void main(String[] args) throws Exception {
            PrintStream told = System.out;
            System.setOut(new PrintStream(new ByteArrayOutputStream()));
            System.setErr(new PrintStream(new ByteArrayOutputStream()));
            Map<String, Callable<?>> uses = new LinkedHashMap<>();
            addPublicMethods(uses);
            addDeepOnes(uses);
            for (String name : uses.keySet()) {
                if (args.length > 0 && !name.contains(args[0])) {
                    continue;
                }
                told.println(name);
                Callable<?> use = uses.get(name);
                Class<?> before = kindOf(outcomeOf(use));
                on(SMALLEST_STACK, () -> check(name, outcomeOf(use)));
                on(STACK, () -> useNearTheEnd(name, use));
                Throwable after = outcomeOf(use);
                if (kindOf(after) != before) {
                    FAULTS.add(name + " afterwards: " + after);
                }
            }
            told.println("faults: " + FAULTS + " in " + (uses.size() > 250 ? "all" : "few") + " operations");
            System.exit(0);
        }

        private static void on(long stack, Runnable run) throws InterruptedException {
            Thread thread = new Thread(null, run, "little stack", stack);
            thread.start();
            thread.join();
        }

        private static void useNearTheEnd(String name, Callable<?> use) {
            reached = 0;
            below(Integer.MAX_VALUE, () -> null);
            int deepest = reached;
            for (int i = 0; i < DEPTHS; i++) {
                check(name, below(deepest - i * (deepest / (4 * DEPTHS)), use));
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

        private static void check(String name, Throwable outcome) {
            if (!PublicApi.isStated(outcome) && !(outcome instanceof StackOverflowError)) {
                FAULTS.add(name + ": " + outcome);
            }
        }

        private static void addPublicMethods(Map<String, Callable<?>> uses) throws Exception {
            Map<Class<?>, Object[]> values = PublicApi.values();
            for (PublicApi.Operation operation : PublicApi.operations()) {
                Object receiver = operation.receiver.call();
                Object[] arguments = operation.usualArguments(values);
                boolean sparse = receiver instanceof NVBuiltinArray && ((NVBuiltinArray) receiver).isSparse();
                String on = receiver == null ? "" : (sparse ? "sparse " : "") + receiver.getClass().getSimpleName();
                uses.putIfAbsent(operation.callee + " on " + on, () -> operation.call(receiver, arguments));
            }
        }

        /** What walks over nested data, or comes back to Java. */
        private static void addDeepOnes(Map<String, Callable<?>> uses) throws IOException {
            Object data = JavaDataTest.nestedCells(ValueTree.MAX_LEVELS);
            NVBuiltinArray cell = NVBuiltinArray.of(data);
            NVBuiltinArray twin = NVBuiltinArray.of(data);
            byte[] form = cell.serialize();
            int[] extents = new int[255];
            Arrays.fill(extents, 1);
            NVNumericArray cube = NVNumericArray.zeros(extents);
            Component showcase = TestComponents.open("showcase");
            showcase.setOutput(new PrintStream(new ByteArrayOutputStream()));
            DoubleUnaryOperator lambda = x -> x * x;
            uses.put("deep cell", () -> NVBuiltinArray.of(data));
            uses.put("deep nesting", () -> NVBuiltinArray.of(JavaDataTest.nested(255)));
            uses.put("store deep", () -> {
                NVCellArray.row(1.0).setAt(0, cell);
                return null;
            });
            uses.put("deep toObject", cell::toObject);
            uses.put("deep toString", cell::toString);
            uses.put("deep duplicate", cell::duplicate);
            uses.put("deep serialize", cell::serialize);
            uses.put("deep equals", () -> cell.equals(twin));
            uses.put("deep hashCode", cell::hashCode);
            uses.put("deep deserialize", () -> NVBuiltinArray.deserialize(form));
            uses.put("many dimensions", cube::toObject);
            uses.put("text of many dimensions", cube::toString);
            uses.put("call with deep", () -> showcase.call("same", 1, cell));
            uses.put("call with deep data", () -> showcase.call("same", 1, data));
            uses.put("call back", () -> showcase.call("minimize", 1, lambda, -1.0, 2.0));
            uses.put("print", () -> showcase.call("say", 0, "text"));
            uses.put("print from a thread", () -> showcase.call("say_from_thread", 0, "text", 2.0));
            uses.put("fail", () -> showcase.call("fail_in_call", 0, "as asked"));
            uses.put("gather", () -> showcase.call("gather", 1, cell, lambda, "text"));
        }
    }

    @Test
    @DisabledIfEnvironmentVariable(named = "ASAN_OPTIONS", matches = ".*",
            disabledReason = "a sanitizer's frames are larger than those that native code leaves room for")
    void livesWithLittleStack() throws Exception {
        ChildProcess child = ChildProcess.run(Program.class, List.of("-Xint"));
        String last = child.output.substring(Math.max(0, child.output.length() - 4000));
        assertTrue(last.endsWith("faults: [] in all operations\n"), "exit code " + child.exitCode + ": " + last);
    }
}
