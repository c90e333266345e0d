package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;
import java.util.Objects;

/**
 * An array of numbers: floating-point or integer, real or complex, dense or sparse.
 *
 * <p>Values are converted by plain casts: integers keep their low bits, floating values are truncated toward zero, and
 * nothing is checked for range. Reads give unsigned integers their value where the Java type has room for it, and
 * their bits otherwise.
 */
public final class NVNumericArray extends NumericElements {
    private static final long serialVersionUID = 1L;

    NVNumericArray(NativePtr pointer) {
        super(pointer);
    }

    NVNumericArray(NativePtr pointer, ClassId classId) {
        super(pointer, classId);
    }

    /**
     * A 1-by-1 double array.
     *
     * @param value its element
     * @return a new array
     */
    public static NVNumericArray of(double value) {
        return (NVNumericArray) Wrappers.made(NVKRT.qxScalar2qxArray(value, 0.0, ClassId.DOUBLE.code(), 0));
    }

    /**
     * An m-by-n double array.
     *
     * @param rows m rows; shorter rows are filled up with zeros. No row gives 1-by-0
     * @return a new array
     * @throws IllegalArgumentException for more than 2^31-1 elements
     */
    public static NVNumericArray of(double[][] rows) {
        return create(Objects.requireNonNull(rows, "rows"), null, ClassId.DOUBLE, Complexity.REAL);
    }

    /**
     * An array of the class that fits the data best: {@code long} gives int64, {@code Float} gives single.
     *
     * @param data numbers: boxed, or in arrays of primitive or boxed numbers nested to any depth. One level gives a
     *     row, two levels give rows and columns, three levels give {@code data[i][j][k]} at subscripts i+1, j+1, k+1
     * @return a new array
     * @throws IllegalArgumentException for data that is not numeric or too large
     */
    public static NVNumericArray of(Object data) {
        return create(data, null, natural(data), Complexity.REAL);
    }

    /**
     * As {@link #of(Object)}, with elements of a given class.
     *
     * @param data numbers, logical values or text of numbers; any other element counts as 0
     * @param classId a numeric class
     * @return a new array
     * @throws IllegalArgumentException for a class that is not numeric, or data that is too large
     * @throws NumberFormatException for text that is no number
     */
    public static NVNumericArray of(Object data, ClassId classId) {
        return create(data, null, classId, Complexity.REAL);
    }

    /**
     * A complex double array.
     *
     * @param real m rows
     * @param imaginary rows likewise; where one part is smaller, it is filled up with zeros
     * @return a new array
     * @throws IllegalArgumentException for more than 2^31-1 elements
     */
    public static NVNumericArray complex(double[][] real, double[][] imaginary) {
        return create(real, imaginary, ClassId.DOUBLE, Complexity.COMPLEX);
    }

    /**
     * A complex array.
     *
     * @param real numbers as for {@link #of(Object)}, or null for zeros
     * @param imaginary likewise
     * @param classId a numeric class
     * @return a new array with the extents of the larger part
     * @throws IllegalArgumentException for a class that is not numeric, or data that is too large
     */
    public static NVNumericArray complex(Object real, Object imaginary, ClassId classId) {
        return create(real, imaginary, classId, Complexity.COMPLEX);
    }

    /**
     * A real double array of zeros.
     *
     * @param dimensions extents; none give 0-by-0, one gives a row
     * @return a new array
     * @throws IllegalArgumentException for a negative extent or more than 2^31-1 elements
     */
    public static NVNumericArray zeros(int... dimensions) {
        return zeros(ClassId.DOUBLE, Complexity.REAL, dimensions);
    }

    /**
     * An array of zeros.
     *
     * @param classId a numeric class
     * @param complexity whether it has an imaginary part
     * @param dimensions extents; none give 0-by-0, one gives a row
     * @return a new array
     * @throws IllegalArgumentException for a class that is not numeric, a negative extent or more than 2^31-1 elements
     */
    public static NVNumericArray zeros(ClassId classId, Complexity complexity, int... dimensions) {
        requireNumeric(classId);
        int[] extents = Dimensions.checked(dimensions);
        int part = Objects.requireNonNull(complexity, "complexity").code();
        return (NVNumericArray) Wrappers.made(NVKRT.qxCreateArray(extents, classId.code(), part));
    }

    /**
     * An array from elements in storage order, the first subscript varying fastest.
     *
     * @param dimensions extents; none give 0-by-0, one gives a row
     * @param classId a numeric class
     * @param real a one-level array of numbers, one for each element
     * @param imaginary likewise, or null for a real array
     * @return a new array
     * @throws IllegalArgumentException when lengths and extents don't agree, or for data that is not numeric
     */
    public static NVNumericArray ofFlat(int[] dimensions, ClassId classId, Object real, Object imaginary) {
        requireNumeric(classId);
        return (NVNumericArray) FlatData.make(dimensions, classId, real, imaginary);
    }

    /**
     * A sparse double matrix from its elements.
     *
     * @param rows one-based row of each element
     * @param columns one-based column of each element
     * @param values the elements; zeros among them are left out, and those at one position are added up, where a sum
     *     that comes to zero stays as a stored element. Each of the three arrays may have one element only, which then
     *     counts for all
     * @param m number of rows
     * @param n number of columns
     * @return a new array
     * @throws IllegalArgumentException when the lengths don't agree, or m or n is negative
     * @throws ArrayIndexOutOfBoundsException for a position outside the matrix
     */
    public static NVNumericArray sparse(int[] rows, int[] columns, double[] values, int m, int n) {
        return (NVNumericArray) SparseBuilder.build(rows, columns, values, null, m, n, ClassId.DOUBLE);
    }

    /**
     * A complex sparse matrix from its elements.
     *
     * @param rows one-based row of each element
     * @param columns one-based column of each element
     * @param real real parts, as for {@link #sparse(int[], int[], double[], int, int)}
     * @param imaginary imaginary parts, as many
     * @param m number of rows
     * @param n number of columns
     * @return a new array
     * @throws IllegalArgumentException when the lengths don't agree, or m or n is negative
     * @throws ArrayIndexOutOfBoundsException for a position outside the matrix
     */
    public static NVNumericArray sparse(int[] rows, int[] columns, double[] real, double[] imaginary, int m, int n) {
        Objects.requireNonNull(imaginary, "imaginary");
        return (NVNumericArray) SparseBuilder.build(rows, columns, real, imaginary, m, n, ClassId.DOUBLE);
    }

    /**
     * A sparse matrix with the non-zero elements of a full one.
     *
     * @param full m rows; shorter rows are filled up with zeros
     * @return a new array
     * @throws IllegalArgumentException for more than 2^31-1 elements
     */
    public static NVNumericArray sparse(double[][] full) {
        return (NVNumericArray) SparseBuilder.compress(full, ClassId.DOUBLE);
    }

    private static NVNumericArray create(Object real, Object imaginary, ClassId classId, Complexity complexity) {
        requireNumeric(classId);
        checkData(real);
        checkData(imaginary);
        NestedCopy shape = new NestedCopy(false);
        Object realData = shape.copy(real);
        Object imaginaryData = shape.copy(imaginary);
        return (NVNumericArray)
                Wrappers.made(NVKRT.qxObject2qxArray(realData, imaginaryData, classId.code(), complexity.code()));
    }

    private static ClassId natural(Object data) {
        ClassId classId = Classification.of(Objects.requireNonNull(data, "data"));
        if (classId == null || !classId.isNumeric()) {
            throw new IllegalArgumentException("data of type " + data.getClass().getTypeName() + " is not numeric");
        }
        return classId;
    }

    private static void checkData(Object data) {
        ClassId natural = Classification.of(data);
        if (natural == null || natural.isCompound()) {
            throw new IllegalArgumentException("data of type " + data.getClass().getTypeName() + " holds no numbers");
        }
    }

    private static void requireNumeric(ClassId classId) {
        if (!Objects.requireNonNull(classId, "classId").isNumeric()) {
            throw new IllegalArgumentException("class " + classId + " is not numeric");
        }
    }

    /**
     * The real part of a matrix, row by row: {@code double[m][n]} for m-by-n, {@code double[1][1]} for a scalar,
     * {@code double[0][]} for 0-by-n, m empty rows for m-by-0. Sparse matrices come out full.
     *
     * @return a new array
     * @throws IllegalArgumentException for more than two dimensions; {@link #toArray(Class)} reads those
     */
    public double[][] toDoubleArray() {
        return toArray(double[][].class);
    }

    /**
     * The imaginary part of a matrix, in the shape of {@link #toDoubleArray()}.
     *
     * @return a new array
     * @throws IllegalArgumentException for more than two dimensions, or a real array
     */
    public double[][] toImaginaryDoubleArray() {
        return toImaginaryArray(double[][].class);
    }

    /**
     * The real part of a matrix as {@code float} values, in the shape of {@link #toDoubleArray()}.
     *
     * @return a new array
     * @throws IllegalArgumentException for more than two dimensions
     */
    public float[][] toFloatArray() {
        return toArray(float[][].class);
    }

    /**
     * The real part of a matrix as {@code long} values, in the shape of {@link #toDoubleArray()}.
     *
     * @return a new array
     * @throws IllegalArgumentException for more than two dimensions
     */
    public long[][] toLongArray() {
        return toArray(long[][].class);
    }

    /**
     * The real part of a matrix as {@code int} values, in the shape of {@link #toDoubleArray()}.
     *
     * @return a new array
     * @throws IllegalArgumentException for more than two dimensions
     */
    public int[][] toIntArray() {
        return toArray(int[][].class);
    }

    /**
     * The real part of a matrix as {@code short} values, in the shape of {@link #toDoubleArray()}.
     *
     * @return a new array
     * @throws IllegalArgumentException for more than two dimensions
     */
    public short[][] toShortArray() {
        return toArray(short[][].class);
    }

    /**
     * The real part of a matrix as {@code byte} values, in the shape of {@link #toDoubleArray()}.
     *
     * @return a new array
     * @throws IllegalArgumentException for more than two dimensions
     */
    public byte[][] toByteArray() {
        return toArray(byte[][].class);
    }

    /**
     * The real part, nested as deeply as there are dimensions, first subscript outermost. A level of extent 0 is an
     * empty array, never null. Sparse matrices come out full.
     *
     * @param type an array type with one level for each dimension, of primitive or boxed numbers or chars:
     *     {@code double[][][].class} for three dimensions, {@code Integer[][].class} for a matrix
     * @param <A> the type
     * @return a new array
     * @throws IllegalArgumentException for a type whose depth is not the number of dimensions, or another element type
     * @throws UnsupportedOperationException for more than 255 dimensions, or extents that no Java array of this virtual
     *     machine's memory can show; the same goes for all reads of nested arrays
     */
    public <A> A toArray(Class<A> type) {
        return Reads.nested(this, type, true);
    }

    /**
     * The imaginary part, in the shape of {@link #toArray(Class)}.
     *
     * @param type an array type with one level for each dimension
     * @param <A> the type
     * @return a new array
     * @throws IllegalArgumentException as there, and for a real array
     */
    public <A> A toImaginaryArray(Class<A> type) {
        return Reads.nested(this, type, false);
    }

    /**
     * The imaginary part in the shape of {@link #toObject()}.
     *
     * @return a new nested array
     * @throws IllegalArgumentException for a real array
     * @throws UnsupportedOperationException as there
     */
    public Object toImaginaryObject() {
        return Reads.natural(this, false);
    }

    /**
     * The real part in storage order, the first subscript varying fastest, whatever the dimensions. Of a sparse matrix
     * only the stored elements, in the order of {@link #subscriptsAlong}.
     *
     * @return a new array, empty for an empty array
     */
    public double[] toFlatDoubleArray() {
        return toFlatArray(double[].class);
    }

    /**
     * The imaginary part in the order of {@link #toFlatDoubleArray()}.
     *
     * @return a new array
     * @throws IllegalArgumentException for a real array
     */
    public double[] toFlatImaginaryDoubleArray() {
        return toFlatImaginaryArray(double[].class);
    }

    /**
     * The real part in the order of {@link #toFlatDoubleArray()}.
     *
     * @param type a one-level array type of primitive numbers or chars
     * @param <A> the type
     * @return a new array
     * @throws IllegalArgumentException for another type
     */
    public <A> A toFlatArray(Class<A> type) {
        return Reads.flat(this, type, true);
    }

    /**
     * The imaginary part in the order of {@link #toFlatDoubleArray()}.
     *
     * @param type a one-level array type of primitive numbers or chars
     * @param <A> the type
     * @return a new array
     * @throws IllegalArgumentException for another type, or a real array
     */
    public <A> A toFlatImaginaryArray(Class<A> type) {
        return Reads.flat(this, type, false);
    }

    @Override
    public NVNumericArray duplicate() {
        return (NVNumericArray) super.duplicate();
    }

    @Override
    public NVNumericArray sharedCopy() {
        return (NVNumericArray) super.sharedCopy();
    }
}
