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
        return (double) half(bits) * 2.0;
    }

    /** As {@link #toDouble}, rounded once. */
    static float toFloat(long bits, ClassId classId) {
        return bits >= 0 || classId != ClassId.UINT64 ? bits : (float) half(bits) * 2.0f;
    }

    /** Half the unsigned value, the lost bit kept for the rounding. */
    private static long half(long bits) {
        return (bits >>> 1) | (bits & 1);
    }
}
