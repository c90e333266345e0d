package com.norvane.toolbox.loomkit;

/** Values of unsigned integers, whose single elements cross from native code as bits. */
final class Unsigned {
    private Unsigned() {}

    /** The value of bits that were sign-extended, as far as 64 bits hold it. Other classes stay as they are. */
    static long mask(long bits, ClassId classId) {
        boolean narrow = classId.isUnsigned() && classId.numericBits() < Long.SIZE;
        return narrow ? bits & ((1L << classId.numericBits()) - 1) : bits;
    }

    /** The value of bits that {@link #mask} gave for an unsigned class. */
    static double toDouble(long bits, ClassId classId) {
        if (bits >= 0 || classId != ClassId.UINT64) {
            return bits;
        }
        // Half the value, with the lost bit kept for the rounding, then doubled.
        return (double) ((bits >>> 1) | (bits & 1)) * 2.0;
    }
}
