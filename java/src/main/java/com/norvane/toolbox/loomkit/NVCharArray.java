package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;
import java.util.Objects;

/** An array of UTF-16 code units: a text is a row of them, and several texts of one length are a matrix. */
public final class NVCharArray extends NVBuiltinArray {
    private static final long serialVersionUID = 1L;

    NVCharArray(NativePtr pointer) {
        super(pointer);
    }

    NVCharArray(NativePtr pointer, ClassId classId) {
        super(pointer, classId);
    }

    /**
     * A row with the units of a text.
     *
     * @param text the text; an empty one gives 1-by-0
     * @return a new 1-by-n array
     */
    public static NVCharArray of(String text) {
        return fromNested(Objects.requireNonNull(text, "text"));
    }

    /**
     * A matrix with a text in each row. Shorter ones are filled up with the unit 0.
     *
     * @param rows m texts, null being an empty one; none give 1-by-0
     * @return a new m-by-n array, n being the length of the longest text
     * @throws IllegalArgumentException for more than 2^31-1 elements
     */
    public static NVCharArray of(String... rows) {
        return fromNested(rows);
    }

    /**
     * An m-by-n array.
     *
     * @param rows m rows; shorter ones are filled up with the unit 0. No row gives 1-by-0
     * @return a new array
     * @throws IllegalArgumentException for more than 2^31-1 elements
     */
    public static NVCharArray of(char[][] rows) {
        return fromNested(rows);
    }

    /**
     * An array from elements in storage order, the first subscript varying fastest.
     *
     * @param dimensions extents; none give 0-by-0, one gives a row
     * @param units one for each element
     * @return a new array
     * @throws IllegalArgumentException when length and extents don't agree
     */
    public static NVCharArray ofFlat(int[] dimensions, char[] units) {
        return (NVCharArray) FlatData.make(dimensions, ClassId.CHAR, units, null);
    }

    private static NVCharArray fromNested(Object data) {
        return (NVCharArray) NestedCopy.make(Objects.requireNonNull(data, "rows"), ClassId.CHAR);
    }

    /**
     * The text of a row, units of 0 included.
     *
     * @return the text; that of an empty array is empty
     * @throws IllegalStateException for an array with several rows; {@link #toStrings()} reads those
     */
    public String toJavaString() {
        return read(
                pointer -> {
                    int[] extents = NVKRT.qxGetDimensions(pointer);
                    if (!NVKRT.qxIsEmpty(pointer) && (extents.length != 2 || extents[0] != 1)) {
                        throw new IllegalStateException("the text has several rows");
                    }
                    return NVKRT.qxGetStringData(pointer, true);
                });
    }

    /**
     * The text in each row of a matrix, without the units of 0 at its end.
     *
     * @return a new array with one text for each row
     * @throws IllegalStateException for more than two dimensions
     * @throws UnsupportedOperationException for more rows than this virtual machine's memory can hold
     */
    public String[] toStrings() {
        return read(
                pointer -> {
                    int[] extents = NVKRT.qxGetDimensions(pointer);
                    if (extents.length != 2) {
                        throw new IllegalStateException("the text has " + extents.length + " dimensions");
                    }
                    Dimensions.checkShowable(extents);
                    return rows(NVKRT.qxGetCharData(pointer, true), extents[0], extents[1]);
                });
    }

    private static String[] rows(char[] columnMajor, int rows, int columns) {
        String[] texts = new String[rows];
        char[] row = new char[columns];
        for (int i = 0; i < rows; i++) {
            int length = 0;
            for (int j = 0; j < columns; j++) {
                row[j] = columnMajor[i + rows * j];
                length = row[j] == 0 ? length : j + 1;
            }
            texts[i] = new String(row, 0, length);
        }
        return texts;
    }

    /**
     * A matrix, row by row: {@code char[m][n]} for m-by-n, {@code char[1][n]} for a row, {@code char[0][]} for 0-by-n.
     *
     * @return a new array
     * @throws IllegalArgumentException for more than two dimensions; {@link #toObject()} reads those
     */
    public char[][] toCharArray() {
        Reads.checkDepth(this, char[][].class);
        return (char[][]) toObject();
    }

    /**
     * The units in storage order, the first subscript varying fastest.
     *
     * @return a new array, empty for an empty array
     */
    public char[] toFlatCharArray() {
        return read(pointer -> NVKRT.qxGetCharData(pointer, true));
    }

    /**
     * One unit.
     *
     * @param subscripts one-based, one for each dimension
     * @return its value
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public char get(int... subscripts) {
        return readAt(subscripts, pointer -> NVKRT.qxGetCharAt(pointer, Dimensions.given(subscripts)));
    }

    /**
     * One unit.
     *
     * @param index zero-based, in storage order
     * @return its value
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public char getAt(int index) {
        return readAt(index, pointer -> NVKRT.qxGetCharAt(pointer, index));
    }

    /**
     * Stores one unit.
     *
     * @param value the unit
     * @param subscripts one-based, one for each dimension
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public void set(char value, int... subscripts) {
        writeAt(subscripts, pointer -> NVKRT.qxSetAt(pointer, Dimensions.given(subscripts), value));
    }

    /**
     * Stores one unit.
     *
     * @param index zero-based, in storage order
     * @param value the unit
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public void setAt(int index, char value) {
        writeAt(index, pointer -> NVKRT.qxSetAt(pointer, index, value));
    }

    /**
     * Stores all units.
     *
     * @param flat one for each element, in storage order
     * @throws IllegalArgumentException for another length
     */
    public void setData(char[] flat) {
        FlatData.store(this, flat, true);
    }

    @Override
    public NVCharArray duplicate() {
        return (NVCharArray) super.duplicate();
    }

    @Override
    public NVCharArray sharedCopy() {
        return (NVCharArray) super.sharedCopy();
    }
}
