package com.norvane.toolbox.loomkit;

import java.util.Arrays;
import java.util.Objects;

/** Checks of extents and subscripts before they reach native code. */
final class Dimensions {
    /** Java arrays can't be nested deeper, so such an array could never be read. */
    static final int MAX_COUNT = 255;

    /** What a Java array takes besides its elements, of which each takes a byte at least. */
    private static final int BYTES_OF_JAVA_ARRAY = 16;

    private Dimensions() {}

    /** One-based subscripts, which native code compares with the extents by itself. */
    static int[] given(int[] subscripts) {
        return Objects.requireNonNull(subscripts, "subscripts");
    }

    /**
     * A checked copy in the form that native code keeps: no extent gives 0-by-0, one extent n gives 1-by-n.
     *
     * @throws IllegalArgumentException for a negative extent, too many of them, or more than 2^31-1 elements
     */
    static int[] checked(int... extents) {
        int[] copy = Objects.requireNonNull(extents, "dimensions").clone();
        if (copy.length > MAX_COUNT) {
            throw new IllegalArgumentException(
                    "an array can have at most " + MAX_COUNT + " dimensions, not " + copy.length);
        }
        for (int extent : copy) {
            if (extent < 0) {
                throw new IllegalArgumentException("negative extent in " + Arrays.toString(copy));
            }
        }
        checkCount(Arrays.stream(copy).asLongStream().toArray(), copy.length);
        switch (copy.length) {
            case 0:
                return new int[] {0, 0};
            case 1:
                return new int[] {1, copy[0]};
            default:
                return copy;
        }
    }

    /** Extents of 0 count as 1, since native code multiplies the others as well. */
    static void checkCount(long[] extents, int length) {
        long product = 1;
        for (int i = 0; i < length; i++) {
            product *= Math.max(1, extents[i]);
            if (product > Integer.MAX_VALUE) {
                throw new IllegalArgumentException(
                        "extents "
                                + Arrays.toString(Arrays.copyOf(extents, length))
                                + " make more than "
                                + Integer.MAX_VALUE
                                + " elements");
            }
        }
    }

    /**
     * @param level of a Java array inside another one, 0 being the outermost
     * @throws IllegalArgumentException for a level that would make one dimension too many
     */
    static void checkLevel(int level) {
        if (level >= MAX_COUNT) {
            throw new IllegalArgumentException(
                    "the array is nested more than " + MAX_COUNT + " levels deep, or contains itself");
        }
    }

    /**
     * Looks whether nested Java arrays can show an array, before native code makes the first of them: few bytes can
     * stand for an array with a great many rows without elements, or for a sparse one.
     *
     * @throws UnsupportedOperationException for too many dimensions, or Java arrays that need more memory than there is
     */
    static void checkShowable(int[] extents) {
        if (extents.length > MAX_COUNT) {
            throw new UnsupportedOperationException(
                    "no Java array has " + extents.length + " dimensions, only up to " + MAX_COUNT);
        }
        double arrays = 1;
        double bytes = 0;
        for (int extent : extents) {
            bytes += arrays * (BYTES_OF_JAVA_ARRAY + extent);
            arrays *= extent;
        }
        if (bytes > Runtime.getRuntime().maxMemory()) {
            throw new UnsupportedOperationException(
                    "the extents " + Arrays.toString(extents) + " make Java arrays of at least "
                            + String.format("%.0f", bytes) + " bytes, more than this virtual machine may use");
        }
    }

    static int count(int[] extents) {
        int product = 1;
        for (int extent : extents) {
            product *= extent;
        }
        return product;
    }
}
