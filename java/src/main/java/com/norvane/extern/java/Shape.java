package com.norvane.extern.java;

import java.util.Arrays;
import java.util.Objects;

/** Extents of pure Java arrays. */
final class Shape {
    /** Java arrays can't be nested deeper, so such an array could never be read back. */
    private static final int MAX_COUNT = 255;

    private Shape() {}

    /**
     * @param slotsPerElement values that each element consists of
     * @param values how many there are in all
     * @return a copy of the extents
     * @throws IllegalArgumentException for no extents, a negative one, or another number of values
     */
    static int[] checked(int[] dimensions, int slotsPerElement, int values) {
        int[] copy = Objects.requireNonNull(dimensions, "dimensions").clone();
        if (copy.length == 0 || copy.length > MAX_COUNT) {
            throw new IllegalArgumentException("an array can't have " + copy.length + " dimensions");
        }
        checkSize(copy, slotsPerElement);
        if ((long) slotsPerElement * count(copy) != values) {
            throw new IllegalArgumentException(
                    "dimensions "
                            + Arrays.toString(copy)
                            + " with "
                            + slotsPerElement
                            + " values each don't fit "
                            + values
                            + " values");
        }
        return copy;
    }

    /** Extents of 0 count as 1, since native code multiplies the others as well. */
    private static void checkSize(int[] dimensions, int slotsPerElement) {
        long slots = Math.max(1, slotsPerElement);
        for (int extent : dimensions) {
            if (extent < 0) {
                throw new IllegalArgumentException("negative extent in " + Arrays.toString(dimensions));
            }
            slots *= Math.max(1, extent);
            if (slots > Integer.MAX_VALUE) {
                throw new IllegalArgumentException("too many values in " + Arrays.toString(dimensions));
            }
        }
    }

    static int count(int[] dimensions) {
        int product = 1;
        for (int extent : dimensions) {
            product *= extent;
        }
        return product;
    }

    /** Values in one line: the text of an array in native memory has a line end after each row. */
    static String list(Object[] values) {
        return Arrays.deepToString(values).replaceAll("\\R+(?=[,\\]])", "").replaceAll("\\R+", "; ");
    }

    static String text(int[] dimensions) {
        StringBuilder text = new StringBuilder();
        for (int extent : dimensions) {
            text.append(text.length() == 0 ? "" : "-by-").append(extent);
        }
        return dimensions.length == 1 ? "1-by-" + text : text.toString();
    }
}
