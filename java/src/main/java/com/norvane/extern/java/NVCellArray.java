package com.norvane.extern.java;

import java.util.Arrays;
import java.util.Objects;

/**
 * An array of values of any kind, as plain Java data: no native memory stands behind it.
 *
 * <p>Elements are in column-major order: the first subscript varies fastest. The array itself can't be changed; an
 * element that is a Java array still can.
 */
public final class NVCellArray {
    private final int[] dimensions;
    private final Object[] elements;

    /**
     * An array of any number of dimensions.
     *
     * @param dimensions extents, one at least; one extent n stands for 1-by-n
     * @param elements the elements in column-major order, as many as the extents say; null is allowed
     * @throws IllegalArgumentException for a negative extent, or another number of elements
     */
    public NVCellArray(int[] dimensions, Object... elements) {
        this.elements = Arrays.copyOf(Objects.requireNonNull(elements, "elements"), elements.length, Object[].class);
        this.dimensions = Shape.checked(dimensions, 1, elements.length);
    }

    /**
     * A 1-by-n array.
     *
     * @param elements n elements; null is allowed
     * @return a new array
     */
    public static NVCellArray row(Object... elements) {
        return new NVCellArray(new int[] {1, Objects.requireNonNull(elements, "elements").length}, elements);
    }

    /**
     * An n-by-1 array.
     *
     * @param elements n elements; null is allowed
     * @return a new array
     */
    public static NVCellArray column(Object... elements) {
        return new NVCellArray(new int[] {Objects.requireNonNull(elements, "elements").length, 1}, elements);
    }

    /**
     * An m-by-n array.
     *
     * @param rows m rows of one length n
     * @return a new array
     * @throws IllegalArgumentException for rows of different length
     */
    public static NVCellArray of(Object[][] rows) {
        for (Object[] row : Objects.requireNonNull(rows, "rows")) {
            Objects.requireNonNull(row, "row");
        }
        int columns = rows.length == 0 ? 0 : rows[0].length;
        Object[] elements = new Object[Math.multiplyExact(rows.length, columns)];
        for (int i = 0; i < rows.length; i++) {
            if (rows[i].length != columns) {
                throw new IllegalArgumentException("row " + i + " has " + rows[i].length + " elements, not " + columns);
            }
            for (int j = 0; j < columns; j++) {
                elements[i + rows.length * j] = rows[i][j];
            }
        }
        return new NVCellArray(new int[] {rows.length, columns}, elements);
    }

    /**
     * The extents.
     *
     * @return a new array
     */
    public int[] getDimensions() {
        return dimensions.clone();
    }

    /**
     * The product of the extents.
     *
     * @return the number of elements
     */
    public int numberOfElements() {
        return elements.length;
    }

    /**
     * How many extents there are.
     *
     * @return 1 or more
     */
    public int numberOfDimensions() {
        return dimensions.length;
    }

    /**
     * One element.
     *
     * @param index zero-based, in column-major order
     * @return the element
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public Object get(int index) {
        return elements[index];
    }

    /**
     * All elements in column-major order.
     *
     * @return a new array
     */
    public Object[] getFlatArray() {
        return elements.clone();
    }

    /** Equal extents and elements, Java arrays being compared by their contents. */
    @Override
    public boolean equals(Object other) {
        return other instanceof NVCellArray
                && Arrays.equals(dimensions, ((NVCellArray) other).dimensions)
                && Arrays.deepEquals(elements, ((NVCellArray) other).elements);
    }

    @Override
    public int hashCode() {
        return 31 * Arrays.hashCode(dimensions) + Arrays.deepHashCode(elements);
    }

    /** The extents, and the elements in column-major order, in one line. */
    @Override
    public String toString() {
        return Shape.text(dimensions) + " cell " + Shape.list(elements);
    }
}
