package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;
import java.util.Objects;

/** An array of true and false, dense or sparse. */
public final class NVLogicalArray extends NVBuiltinArray {
    private static final long serialVersionUID = 1L;

    NVLogicalArray(NativePtr pointer) {
        super(pointer);
    }

    NVLogicalArray(NativePtr pointer, ClassId classId) {
        super(pointer, classId);
    }

    /**
     * A 1-by-1 array.
     *
     * @param value its element
     * @return a new array
     */
    public static NVLogicalArray of(boolean value) {
        return (NVLogicalArray) Wrappers.made(NVKRT.qxScalar2qxArray(value, false, ClassId.LOGICAL.code(), 0));
    }

    /**
     * A 1-by-n array.
     *
     * @param row n elements
     * @return a new array
     */
    public static NVLogicalArray of(boolean[] row) {
        return fromNested(row);
    }

    /**
     * An m-by-n array.
     *
     * @param rows m rows; shorter rows are filled up with false. No row gives 1-by-0
     * @return a new array
     * @throws IllegalArgumentException for more than 2^31-1 elements
     */
    public static NVLogicalArray of(boolean[][] rows) {
        return fromNested(rows);
    }

    /**
     * An array of false.
     *
     * @param dimensions extents; none give 0-by-0, one gives a row
     * @return a new array
     * @throws IllegalArgumentException for a negative extent or more than 2^31-1 elements
     */
    public static NVLogicalArray falses(int... dimensions) {
        int[] extents = Dimensions.checked(dimensions);
        return (NVLogicalArray) Wrappers.made(NVKRT.qxCreateArray(extents, ClassId.LOGICAL.code(), 0));
    }

    /**
     * An array from elements in storage order, the first subscript varying fastest.
     *
     * @param dimensions extents; none give 0-by-0, one gives a row
     * @param elements one for each element
     * @return a new array
     * @throws IllegalArgumentException when length and extents don't agree
     */
    public static NVLogicalArray ofFlat(int[] dimensions, boolean[] elements) {
        return (NVLogicalArray) FlatData.make(dimensions, ClassId.LOGICAL, elements, null);
    }

    /**
     * A sparse matrix from its elements.
     *
     * @param rows one-based row of each element
     * @param columns one-based column of each element
     * @param values the elements; at one position, one that is true is enough. Each of the three arrays may have one
     *     element only, which then counts for all
     * @param m number of rows
     * @param n number of columns
     * @return a new array
     * @throws IllegalArgumentException when the lengths don't agree, or m or n is negative
     * @throws ArrayIndexOutOfBoundsException for a position outside the matrix
     */
    public static NVLogicalArray sparse(int[] rows, int[] columns, boolean[] values, int m, int n) {
        return (NVLogicalArray) SparseBuilder.build(rows, columns, values, null, m, n, ClassId.LOGICAL);
    }

    /**
     * A sparse matrix with the true elements of a full one.
     *
     * @param full m rows; shorter rows are filled up with false
     * @return a new array
     * @throws IllegalArgumentException for more than 2^31-1 elements
     */
    public static NVLogicalArray sparse(boolean[][] full) {
        return (NVLogicalArray) SparseBuilder.compress(full, ClassId.LOGICAL);
    }

    private static NVLogicalArray fromNested(Object data) {
        return (NVLogicalArray) NestedCopy.make(Objects.requireNonNull(data, "data"), ClassId.LOGICAL);
    }

    /**
     * A matrix, row by row: {@code boolean[m][n]} for m-by-n, {@code boolean[1][1]} for a scalar, {@code boolean[0][]}
     * for 0-by-n, m empty rows for m-by-0. Sparse matrices come out full.
     *
     * @return a new array
     * @throws IllegalArgumentException for more than two dimensions; {@link #toObject()} reads those
     */
    public boolean[][] toBooleanArray() {
        Reads.checkDepth(this, boolean[][].class);
        return (boolean[][]) toObject();
    }

    /**
     * The elements in storage order, the first subscript varying fastest; of a sparse matrix only those stored.
     *
     * @return a new array, empty for an empty array
     */
    public boolean[] toFlatBooleanArray() {
        return read(pointer -> NVKRT.qxGetBooleanData(pointer, true));
    }

    /**
     * One element.
     *
     * @param subscripts one-based, one for each dimension
     * @return its value
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public boolean get(int... subscripts) {
        return readAt(subscripts, pointer -> NVKRT.qxGetBooleanAt(pointer, Dimensions.given(subscripts)));
    }

    /**
     * One element.
     *
     * @param index zero-based, in storage order
     * @return its value
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public boolean getAt(int index) {
        return readAt(index, pointer -> NVKRT.qxGetBooleanAt(pointer, index));
    }

    /**
     * Stores one element.
     *
     * @param value the value
     * @param subscripts one-based, one for each dimension
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public void set(boolean value, int... subscripts) {
        writeAt(subscripts, pointer -> NVKRT.qxSetAt(pointer, Dimensions.given(subscripts), value));
    }

    /**
     * Stores one element.
     *
     * @param index zero-based, in storage order
     * @param value the value
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public void setAt(int index, boolean value) {
        writeAt(index, pointer -> NVKRT.qxSetAt(pointer, index, value));
    }

    /**
     * Stores all elements, of a sparse array all stored ones.
     *
     * @param flat one value for each, in storage order
     * @throws IllegalArgumentException for another length
     */
    public void setData(boolean[] flat) {
        FlatData.store(this, flat, true);
    }

    @Override
    public NVLogicalArray duplicate() {
        return (NVLogicalArray) super.duplicate();
    }

    @Override
    public NVLogicalArray sharedCopy() {
        return (NVLogicalArray) super.sharedCopy();
    }
}
