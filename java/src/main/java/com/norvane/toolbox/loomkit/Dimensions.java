package com.norvane.toolbox.loomkit;

import java.util.Arrays;
import java.util.Objects;

/** Checks of extents and subscripts before they reach native code. */
final class Dimensions {
    /** Java arrays can't be nested deeper, so such an array could never be read. */
    static final int MAX_COUNT = 255;

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

    static int count(int[] extents) {
        int product = 1;
        for (int extent : extents) {
            product *= extent;
        }
        return product;
    }
}
