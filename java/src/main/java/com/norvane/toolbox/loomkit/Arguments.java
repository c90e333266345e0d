package com.norvane.toolbox.loomkit;

import java.util.ArrayList;
import java.util.List;

/** The arguments of one call, ready for native code; their arrays can neither end nor change until it returns. */
final class Arguments implements AutoCloseable {
    private final List<Object> values = new ArrayList<>();
    private final List<NVBuiltinArray> held = new ArrayList<>();
    private final List<JavaData> copied = new ArrayList<>();

    /**
     * @param args what stands for all arguments in a call with a variable number of them
     */
    Arguments(Object[] args) {
        try {
            for (Object argument : listOf(args)) {
                add(argument);
            }
        } catch (RuntimeException | Error failure) {
            close();
            throw failure;
        }
    }

    /** The compiler takes a single {@code double[][]} or {@code String[]} for the list of all arguments. */
    private static Object[] listOf(Object[] args) {
        boolean isList = args != null && (args.getClass() == Object[].class || args instanceof NVArray[]);
        return isList ? args.clone() : new Object[] {args};
    }

    private void add(Object argument) {
        if (argument instanceof NVBuiltinArray) {
            hold((NVBuiltinArray) argument);
            values.add(argument);
        } else if (argument instanceof NVArray) {
            values.add(argument);
        } else if (Classification.of(argument) == null) {
            refuseForeign(argument);
            values.add(new NVJavaObjectRef(argument));
        } else {
            JavaData data = JavaData.of(argument);
            copied.add(data);
            values.add(data.value());
        }
    }

    /** An array of another class loader's copy of this library looks like any Java object from here. */
    private static void refuseForeign(Object argument) {
        Class<?> type = argument.getClass();
        boolean isNamedAsOurs = type.getName().startsWith(NVArray.class.getPackageName() + ".NV");
        if (isNamedAsOurs && type.getClassLoader() != NVArray.class.getClassLoader()) {
            throw new IllegalArgumentException("the " + type.getSimpleName() + " is of the class loader "
                    + type.getClassLoader() + ", which has a loomkit of its own; plain Java data and"
                    + " serialised arrays can go from one to the other");
        }
    }

    private void hold(NVBuiltinArray array) {
        ValueTree.checkLevels(Nesting.levels(array));
        array.handle().acquire();
        held.add(array);
        if (array.tree() != null) {
            array.tree().beginEvaluation();
        }
    }

    List<Object> values() {
        return values;
    }

    /** A result slot that a function left empty holds a wrapper of no array. */
    static NVArray[] resultsOf(List<Object> slots) {
        NVArray[] results = new NVArray[slots.size()];
        for (int i = 0; i < results.length; i++) {
            NVArray result = (NVArray) slots.get(i);
            boolean none = result instanceof NVBuiltinArray && ((NVBuiltinArray) result).getValue().get() == 0;
            results[i] = none ? null : result;
        }
        return results;
    }

    @Override
    public void close() {
        for (NVBuiltinArray array : held) {
            if (array.tree() != null) {
                array.tree().endEvaluation();
            }
            array.handle().release();
        }
        held.clear();
        copied.forEach(JavaData::close);
        copied.clear();
    }
}
