package com.norvane.toolbox.loomkit;

import java.util.concurrent.atomic.AtomicLong;

/**
 * What a cell, struct or sparse array and all views of its elements have in common, since they lie over one native
 * storage: the monitor that serialises access to it, how deeply it is nested, and how many evaluations read it.
 *
 * <p>Levels: 0 for an array without elements that are arrays, one more than the deepest element for a cell or struct.
 */
final class ValueTree {
    /** Native code walks nested values on its stack, so their depth has an end. */
    static final int MAX_LEVELS = 100;

    private static final int UNKNOWN = -1;
    private static final AtomicLong LAST_SERIAL = new AtomicLong();

    /** Two monitors are always entered in the order of their serials. */
    final long serial = LAST_SERIAL.incrementAndGet();

    private int levels = UNKNOWN;
    private int evaluations;

    /** An upper bound on the levels of the whole tree, or -1 when nobody has measured it. */
    synchronized int levels() {
        return levels;
    }

    synchronized void setLevels(int measured) {
        levels = measured;
    }

    /** Makes room for a value of some levels in a slot of the array that lies {@code depth} levels below the root. */
    synchronized void nest(int depth, int valueLevels) {
        int needed = depth + 1 + valueLevels;
        checkLevels(needed);
        if (levels != UNKNOWN) {
            levels = Math.max(levels, needed);
        }
    }

    static void checkLevels(int levels) {
        if (levels > MAX_LEVELS) {
            throw new IllegalArgumentException(
                    "cells and structs can't be nested more than " + MAX_LEVELS + " levels deep");
        }
    }

    synchronized void beginEvaluation() {
        evaluations++;
    }

    synchronized void endEvaluation() {
        evaluations--;
    }

    /** Called with the monitor held, right before a change. */
    synchronized void checkChangeable() {
        if (evaluations > 0) {
            throw new IllegalStateException("the array can't be changed while a function that was given it runs");
        }
    }
}
