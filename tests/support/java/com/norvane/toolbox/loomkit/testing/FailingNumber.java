package com.norvane.toolbox.loomkit.testing;

/** A number that none of its values can be had of. */
public final class FailingNumber extends Number {
    private static final long serialVersionUID = 1L;

    private static IllegalStateException failure() {
        return new IllegalStateException("this number has no value");
    }

    @Override
    public int intValue() {
        throw failure();
    }

    @Override
    public long longValue() {
        throw failure();
    }

    @Override
    public float floatValue() {
        throw failure();
    }

    @Override
    public double doubleValue() {
        throw failure();
    }
}
