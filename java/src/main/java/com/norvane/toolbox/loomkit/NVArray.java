package com.norvane.toolbox.loomkit;

/**
 * A value that a component function takes or gives: an array in native memory ({@link NVBuiltinArray} and its
 * subclasses), or a Java object on its way through native code ({@link NVJavaObjectRef}).
 *
 * <p>Closing gives native memory back at once, and is harmless when done twice. What is not closed is given back some
 * time after it became unreachable; start Java with {@code -Dloomkit.leaks=report} to have such arrays reported on the
 * error stream, with the place that made them.
 */
public abstract class NVArray implements AutoCloseable {
    NVArray() {}

    /** Gives back what the value holds. Further use is an {@link IllegalStateException}. */
    @Override
    public void close() {}

    /**
     * This value as a numeric array.
     *
     * @return this object
     * @throws IllegalStateException when it is something else
     */
    public NVNumericArray asNumeric() {
        return as(NVNumericArray.class);
    }

    /**
     * This value as text.
     *
     * @return this object
     * @throws IllegalStateException when it is something else
     */
    public NVCharArray asChar() {
        return as(NVCharArray.class);
    }

    /**
     * This value as a logical array.
     *
     * @return this object
     * @throws IllegalStateException when it is something else
     */
    public NVLogicalArray asLogical() {
        return as(NVLogicalArray.class);
    }

    /**
     * This value as a cell array.
     *
     * @return this object
     * @throws IllegalStateException when it is something else
     */
    public NVCellArray asCell() {
        return as(NVCellArray.class);
    }

    /**
     * This value as a struct array.
     *
     * @return this object
     * @throws IllegalStateException when it is something else
     */
    public NVStructArray asStruct() {
        return as(NVStructArray.class);
    }

    /**
     * This value as a function handle.
     *
     * @return this object
     * @throws IllegalStateException when it is something else
     */
    public NVFunctionHandle asFunction() {
        return as(NVFunctionHandle.class);
    }

    private <T extends NVArray> T as(Class<T> type) {
        if (!type.isInstance(this)) {
            throw new IllegalStateException(
                    "the value is an " + getClass().getSimpleName() + ", not an " + type.getSimpleName());
        }
        return type.cast(this);
    }
}
