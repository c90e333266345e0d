package com.norvane.toolbox.loomkit.testing;

import java.util.ListIterator;

/** Values to be read or overwritten one after another, with an operation that fails at a chosen place. */
public final class Places implements ListIterator<Object> {
    private final Object[] values;
    private final String failing;
    private final int failsAt;
    private int index;

    /** The operation of this name ("hasNext", "next", "set") fails at the zero-based place; "" for none. What a failing "set" was given is there all the same. */
    public Places(Object[] values, String failing, int failsAt) {
        this.values = values;
        this.failing = failing;
        this.failsAt = failsAt;
    }

    private void enter(String operation, int place) {
        if (operation.equals(failing) && place == failsAt) {
            throw new IllegalStateException(operation + " fails at " + place);
        }
    }

    @Override
    public boolean hasNext() {
        enter("hasNext", index);
        return index < values.length;
    }

    @Override
    public Object next() {
        enter("next", index);
        return values[index++];
    }

    @Override
    public void set(Object value) {
        values[index - 1] = value;
        enter("set", index - 1);
    }

    @Override
    public boolean hasPrevious() {
        throw new UnsupportedOperationException();
    }

    @Override
    public Object previous() {
        throw new UnsupportedOperationException();
    }

    @Override
    public int nextIndex() {
        throw new UnsupportedOperationException();
    }

    @Override
    public int previousIndex() {
        throw new UnsupportedOperationException();
    }

    @Override
    public void remove() {
        throw new UnsupportedOperationException();
    }

    @Override
    public void add(Object value) {
        throw new UnsupportedOperationException();
    }
}
