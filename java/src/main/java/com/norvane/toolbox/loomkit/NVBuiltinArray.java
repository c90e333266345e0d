package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;
import java.io.InvalidObjectException;
import java.io.ObjectInputStream;
import java.io.Serializable;
import java.lang.ref.Reference;
import java.util.Arrays;
import java.util.Objects;
import java.util.function.Consumer;
import java.util.function.Function;

/**
 * An n-dimensional array in native memory, of any class.
 *
 * <p>Elements lie in column-major order: the first subscript varies fastest. Subscripts are one-based, one for each
 * dimension; a single index is zero-based, in storage order. Every array has at least two dimensions; a scalar is
 * 1-by-1.
 *
 * <p>Arrays are compared, hashed and ordered by value, and travel through Java object streams by value. A write while
 * another thread reads or writes the same dense array leaves undefined element values, nothing worse; cells, structs
 * and sparse arrays serialise access by themselves. Each method throws {@link IllegalStateException} once the array is
 * closed.
 */
public class NVBuiltinArray extends NVArray implements Comparable<NVBuiltinArray>, Serializable {
    private static final long serialVersionUID = 1L;

    private final transient ArrayHandle handle;
    private final transient ClassId classId;
    private final transient boolean sparse;

    /** Null for a dense array whose elements are no arrays: its native storage never moves. */
    private transient ValueTree tree;

    /** How far below the root of its tree this array lies. */
    private transient int depth;

    /**
     * Takes over the native array. Called from native code as well. The handle comes last: where anything before it
     * fails, the array is still the caller's.
     */
    NVBuiltinArray(NativePtr pointer) {
        this(pointer, Wrappers.classOf(pointer));
    }

    /** As the other one, for a caller who has asked for the class. */
    NVBuiltinArray(NativePtr pointer, ClassId classId) {
        this.classId = classId;
        sparse = NVKRT.qxIsSparse(pointer);
        tree = sparse || classId.isCompound() ? new ValueTree() : null;
        handle = new ArrayHandle(this, pointer);
    }

    /**
     * An array made from plain Java data: boxed values, text, arrays of them or of primitives nested to any depth,
     * {@link com.norvane.extern.java.NVCellArray} and {@link com.norvane.extern.java.NVStructArray}.
     *
     * <p>The first element decides the class, or the type of the Java array where that element is null; a null in front
     * of an {@code Object[]} or {@code Number[]} makes text. One level of n elements gives 1-by-n, two levels give rows
     * and columns; {@code new double[0][0]} gives 1-by-0. An element that is no value of the class counts as 0.
     * Rows of different length are filled up with zeros. Null gives a 0-by-0 double array.
     *
     * @param data the data; it is copied
     * @return a new array, of the subclass that fits
     * @throws IllegalArgumentException for data that makes no array, is too large, or contains itself
     */
    public static NVBuiltinArray of(Object data) {
        if (data instanceof NVBuiltinArray) {
            return ((NVBuiltinArray) data).duplicate();
        }
        if (Classification.of(data) == null) {
            throw new IllegalArgumentException("no array can be made from a " + data.getClass().getTypeName());
        }
        try (JavaData checked = JavaData.of(data)) {
            NativePtr made = NVKRT.qxObject2qxArray(checked.value(), null, 0, Complexity.REAL.code());
            NVBuiltinArray array = Wrappers.made(made);
            array.stateLevels(checked.levels());
            return array;
        }
    }

    /**
     * An array read from its serialised form. No bytes at all give an array without elements, of class
     * {@link ClassId#UNKNOWN}.
     *
     * @param form what {@link #serialize} gave
     * @return a new array, of the subclass that fits
     * @throws IllegalArgumentException for bytes that are no such form
     * @throws OutOfMemoryError when there is no memory for the array
     */
    public static NVBuiltinArray deserialize(byte[] form) {
        return SerialForm.read(Objects.requireNonNull(form, "form").clone());
    }

    /** The native array, for native code that this array was given to. */
    NativePtr getValue() {
        return handle.pointer();
    }

    final ArrayHandle handle() {
        return handle;
    }

    /** Null where access needs no order. */
    final ValueTree tree() {
        return tree;
    }

    final int depth() {
        return depth;
    }

    /** Makes this array, which nobody else knows yet, a view of an element in the tree of another one. */
    final void joinTree(ValueTree shared, int depthInTree) {
        tree = shared;
        depth = depthInTree;
    }

    /** States how deeply this array, which is no view of an element, is nested: that spares measuring it. */
    final void stateLevels(int levels) {
        if (tree != null) {
            tree.setLevels(levels);
        }
    }

    /** What was stated, as an upper bound; below 0 when nothing was. For a cell or struct. */
    final int levelsIfStated() {
        int stated = tree.levels();
        return stated < 0 ? stated : stated - depth;
    }

    /**
     * Runs a native call that changes nothing. This object stays reachable until the call is over: one that was
     * collected on the way would find its array closed.
     */
    final <R> R read(Function<NativePtr, R> call) {
        ValueTree shared = tree;
        try {
            if (shared == null) {
                return handle.use(call);
            }
            synchronized (shared) {
                return handle.use(call);
            }
        } finally {
            Reference.reachabilityFence(this);
        }
    }

    /** Runs a native call that changes elements. */
    final void write(Consumer<NativePtr> call) {
        read(changing(call));
    }

    private Function<NativePtr, Void> changing(Consumer<NativePtr> call) {
        return pointer -> {
            if (tree != null) {
                tree.checkChangeable();
            }
            call.accept(pointer);
            return null;
        };
    }

    /** Reads at a zero-based index, of which a failure tells. */
    final <R> R readAt(int index, Function<NativePtr, R> call) {
        try {
            return read(call);
        } catch (ArrayIndexOutOfBoundsException failure) {
            throw outside(failure, "index " + index);
        }
    }

    /** Reads at one-based subscripts, of which a failure tells. */
    final <R> R readAt(int[] subscripts, Function<NativePtr, R> call) {
        try {
            return read(call);
        } catch (ArrayIndexOutOfBoundsException failure) {
            throw outside(failure, "subscripts " + Arrays.toString(subscripts));
        }
    }

    /** Writes at a zero-based index, of which a failure tells. */
    final void writeAt(int index, Consumer<NativePtr> call) {
        readAt(index, changing(call));
    }

    /** Writes at one-based subscripts, of which a failure tells. */
    final void writeAt(int[] subscripts, Consumer<NativePtr> call) {
        readAt(subscripts, changing(call));
    }

    private ArrayIndexOutOfBoundsException outside(ArrayIndexOutOfBoundsException failure, String position) {
        String extents = " in an array of extents " + Arrays.toString(read(NVKRT::qxGetDimensions));
        String told = failure.getMessage() + ": " + position + extents;
        return (ArrayIndexOutOfBoundsException) new ArrayIndexOutOfBoundsException(told).initCause(failure);
    }

    private void checkOpen() {
        try {
            handle.pointer();
        } finally {
            Reference.reachabilityFence(this);
        }
    }

    /**
     * What the elements are.
     *
     * @return the class of the array
     */
    public final ClassId classId() {
        checkOpen();
        return classId;
    }

    /**
     * The extents.
     *
     * @return a new array with one extent for each dimension, two at least
     */
    public final int[] dimensions() {
        return read(NVKRT::qxGetDimensions);
    }

    /**
     * How many dimensions the array has.
     *
     * @return 2 or more
     */
    public final int numberOfDimensions() {
        return read(NVKRT::qxGetNumberOfDimensions);
    }

    /**
     * The product of the extents; for a sparse array, those that are not stored count as well.
     *
     * @return the number of elements
     * @throws IndexOutOfBoundsException for a sparse array with more elements than an int can count
     */
    public final int numberOfElements() {
        return read(NVKRT::qxGetNumberOfElements);
    }

    /**
     * Whether an extent is 0.
     *
     * @return true for an array without elements
     */
    public final boolean isEmpty() {
        return read(NVKRT::qxIsEmpty);
    }

    /**
     * Whether only non-zero elements are stored, by columns.
     *
     * @return true for a sparse array
     */
    public final boolean isSparse() {
        checkOpen();
        return sparse;
    }

    /**
     * Whether the array has an imaginary part.
     *
     * @return true for a complex array
     */
    public final boolean isComplex() {
        return read(NVKRT::qxIsComplex);
    }

    /**
     * Whether the array has an imaginary part, as a value.
     *
     * @return real or complex
     */
    public final Complexity complexity() {
        return isComplex() ? Complexity.COMPLEX : Complexity.REAL;
    }

    /**
     * The number of stored elements of a sparse array, stored zeros included; of any other array all elements.
     *
     * @return the number of elements that the flat reads give
     */
    public final int numberOfNonZeros() {
        return read(NVKRT::qxGetNumberOfNonZeros);
    }

    /**
     * How many elements a sparse array can store before its tables must grow; of any other array all elements.
     *
     * @return the capacity
     */
    public final int allocatedNonZeros() {
        return read(NVKRT::qxGetAllocatedNonZeros);
    }

    /**
     * The position of an element in storage order; in a sparse array, as if it were dense.
     *
     * @param subscripts one-based, one for each dimension
     * @return the zero-based index
     * @throws IndexOutOfBoundsException when there is no such element
     */
    public final int indexOf(int... subscripts) {
        return readAt(subscripts, pointer -> NVKRT.qxCalcSingleSubscript(pointer, Dimensions.given(subscripts)));
    }

    /**
     * The subscripts of all stored elements along one dimension, in storage order.
     *
     * @param dimension zero-based: 0 gives rows, 1 gives columns
     * @return a new array of one-based subscripts
     * @throws IllegalArgumentException when there is no such dimension
     */
    public final int[] subscriptsAlong(int dimension) {
        int count = numberOfDimensions();
        if (dimension < 0 || dimension >= count) {
            throw new IllegalArgumentException(
                    "dimension " + dimension + " of an array with dimensions 0 to " + (count - 1));
        }
        return read(pointer -> NVKRT.qxGetIndexArray(pointer, dimension));
    }

    /**
     * The real part as the Java type closest to the class, nested as deeply as there are dimensions, first subscript
     * outermost: {@code double[m][n]} for an m-by-n double array, {@code float[a][b][c]} for a three-dimensional single
     * array, {@code double[1][1]} for a scalar, {@code double[0][]} for a 0-by-n array. Unsigned integers keep their
     * bits in the signed type of their width. Sparse arrays come out full. A cell gives {@link NVArray} elements that
     * share data with it, as {@link NVCellArray#get} does; each is the caller's to close. A struct gives a
     * {@link com.norvane.extern.java.NVStructArray} with such elements as its values, from which
     * {@link NVStructArray#of(com.norvane.extern.java.NVStructArray)} makes a struct again.
     *
     * @return a new nested array, or a new struct value
     * @throws UnsupportedOperationException for a class without a Java type, more than 255 dimensions, or extents that
     *     no Java array of this virtual machine's memory can show
     */
    public Object toObject() {
        return Reads.natural(this, true);
    }

    /**
     * A deep copy.
     *
     * @return a new array with data of its own
     */
    public NVBuiltinArray duplicate() {
        NVBuiltinArray copy = Wrappers.made(read(NVKRT::qxDuplicateArray));
        if (tree != null) {
            copy.stateLevels(levelsIfStated());
        }
        return copy;
    }

    /**
     * Another array over the same data: a change through one is seen through the other. Each is closed by itself.
     *
     * @return a new array that shares data with this one
     */
    public NVBuiltinArray sharedCopy() {
        NVBuiltinArray copy = Wrappers.made(read(NVKRT::qxCreateSharedCopy));
        copy.joinTree(tree, depth);
        return copy;
    }

    /**
     * The serialised form, from which {@link #deserialize} makes an equal array, also in another process. Equal arrays
     * have equal forms.
     *
     * @return a new array of bytes
     * @throws UnsupportedOperationException for an array that has no such form: one that holds a Java object, or would
     *     make more bytes than a Java array can hold
     * @throws OutOfMemoryError when there is no memory for the form
     */
    public final byte[] serialize() {
        return SerialForm.of(this);
    }

    /** Whether closed already. Closing twice is harmless. */
    @Override
    public final void close() {
        handle.close();
    }

    /**
     * Whether the array was closed.
     *
     * @return true once {@link #close} was called
     */
    public final boolean isClosed() {
        return handle.isClosed();
    }

    /**
     * Whether another object is an array with the same class, extents, storage form and elements. NaN equals NaN,
     * whatever its bits, in the real and in the imaginary part, while 0.0 and -0.0 differ.
     *
     * @param other any object
     * @return true for an array of equal value
     * @throws OutOfMemoryError when there is no memory for the serialised forms that are compared
     */
    @Override
    public final boolean equals(Object other) {
        if (this == other) {
            return true;
        }
        return other instanceof NVBuiltinArray && SerialForm.areEqual(this, (NVBuiltinArray) other);
    }

    /**
     * A hash of the value: it changes when elements change.
     *
     * @return the hash of the serialised form; 0 for an array that has none, see {@link #serialize}
     * @throws OutOfMemoryError when there is no memory for the form
     */
    @Override
    public final int hashCode() {
        return SerialForm.hash(this);
    }

    /**
     * Orders arrays by their serialised form, first by its length: an order to sort and search by, without numeric
     * meaning. It agrees with {@link #equals}.
     *
     * <p>An array without such a form, see {@link #serialize}, is equal to itself alone and less than every array that
     * has one. Two of them have no order: each is less than the other.
     *
     * @param other an array
     * @return -1, 0 or 1
     * @throws OutOfMemoryError when there is no memory for the forms
     */
    @Override
    public final int compareTo(NVBuiltinArray other) {
        if (this == Objects.requireNonNull(other, "other")) {
            checkOpen();
            return 0;
        }
        return SerialForm.compare(this, other);
    }

    /**
     * The array as the runtime displays it: a row of text as the text itself, {@code []} for an empty array, aligned
     * rows and columns for others.
     *
     * @return the text, over several lines for most arrays; of a closed array, that it is closed
     */
    @Override
    public String toString() {
        try {
            return read(NVKRT::qxArrayToString);
        } catch (IllegalStateException failure) {
            if (isClosed()) {
                return getClass().getSimpleName() + " (closed)";
            }
            throw failure;
        }
    }

    /**
     * What is written in place of the array. Not private: a private one would not count for the subclasses.
     *
     * @return the array by its serialised form
     */
    final Object writeReplace() {
        return new SerializedArray(serialize());
    }

    /**
     * Never called for what this class wrote.
     *
     * @param stream a forged stream
     * @throws InvalidObjectException always
     */
    private void readObject(ObjectInputStream stream) throws InvalidObjectException {
        throw new InvalidObjectException("an array is read from its serialised form");
    }

    /**
     * Never called for what this class wrote.
     *
     * @throws InvalidObjectException always
     */
    private void readObjectNoData() throws InvalidObjectException {
        throw new InvalidObjectException("an array is read from its serialised form");
    }
}
