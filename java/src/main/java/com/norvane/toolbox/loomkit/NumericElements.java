package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;

/**
 * The elements of a numeric array, one at a time, by subscripts or by index, and all at once in storage order.
 *
 * <p>The conversions are those of {@link NVNumericArray}, whose users see these methods as its own.
 */
abstract class NumericElements extends NVBuiltinArray {
    private static final long serialVersionUID = 1L;

    NumericElements(NativePtr pointer) {
        super(pointer);
    }

    NumericElements(NativePtr pointer, ClassId classId) {
        super(pointer, classId);
    }

    /**
     * The real part of the only element of a 1-by-1 array.
     *
     * @return its value
     * @throws IllegalStateException when there are more or fewer elements
     */
    public double doubleValue() {
        int count = numberOfElements();
        if (count != 1) {
            throw new IllegalStateException("the array has " + count + " elements, not one");
        }
        return getDoubleAt(0);
    }

    /**
     * The real part of one element.
     *
     * @param subscripts one-based, one for each dimension
     * @return its value
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public double getDouble(int... subscripts) {
        return doubleOf(subscripts, true);
    }

    /**
     * The real part of one element.
     *
     * @param index zero-based, in storage order
     * @return its value
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public double getDoubleAt(int index) {
        return doubleOf(index, true);
    }

    /**
     * The real part of one element as a {@code float}.
     *
     * @param subscripts one-based, one for each dimension
     * @return its value, rounded to nearest
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public float getFloat(int... subscripts) {
        return classId().isUnsigned()
                ? Unsigned.toFloat(getLong(subscripts), classId())
                : readAt(subscripts, pointer -> NVKRT.qxGetFloatAt(pointer, Dimensions.given(subscripts), true));
    }

    /**
     * The real part of one element as a {@code float}.
     *
     * @param index zero-based, in storage order
     * @return its value, rounded to nearest
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public float getFloatAt(int index) {
        return classId().isUnsigned()
                ? Unsigned.toFloat(getLongAt(index), classId())
                : readAt(index, pointer -> NVKRT.qxGetFloatAt(pointer, index, true));
    }

    /**
     * The real part of one element as a {@code long}; uint64 as its bits.
     *
     * @param subscripts one-based, one for each dimension
     * @return its value, truncated toward zero; {@link Long#MIN_VALUE} for NaN and what a {@code long} can't hold
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public long getLong(int... subscripts) {
        return longOf(subscripts, true);
    }

    /**
     * The real part of one element as a {@code long}; uint64 as its bits.
     *
     * @param index zero-based, in storage order
     * @return its value, truncated toward zero; {@link Long#MIN_VALUE} for NaN and what a {@code long} can't hold
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public long getLongAt(int index) {
        return longOf(index, true);
    }

    /**
     * The real part of one element as an {@code int}: of an integer the low 32 bits.
     *
     * @param subscripts one-based, one for each dimension
     * @return its value, truncated toward zero; {@link Integer#MIN_VALUE} for NaN and what an {@code int} can't hold
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public int getInt(int... subscripts) {
        int value = readAt(subscripts, pointer -> NVKRT.qxGetIntAt(pointer, Dimensions.given(subscripts), true));
        return (int) Unsigned.mask(value, classId());
    }

    /**
     * The real part of one element as an {@code int}: of an integer the low 32 bits.
     *
     * @param index zero-based, in storage order
     * @return its value, truncated toward zero; {@link Integer#MIN_VALUE} for NaN and what an {@code int} can't hold
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public int getIntAt(int index) {
        int value = readAt(index, pointer -> NVKRT.qxGetIntAt(pointer, index, true));
        return (int) Unsigned.mask(value, classId());
    }

    /**
     * The real part of one element as a {@code short}: the low 16 bits of what {@link #getInt} gives.
     *
     * @param subscripts one-based, one for each dimension
     * @return these bits
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public short getShort(int... subscripts) {
        return (short) getInt(subscripts);
    }

    /**
     * The real part of one element as a {@code short}: the low 16 bits of what {@link #getIntAt} gives.
     *
     * @param index zero-based, in storage order
     * @return these bits
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public short getShortAt(int index) {
        return (short) getIntAt(index);
    }

    /**
     * The real part of one element as a {@code byte}: the low 8 bits of what {@link #getInt} gives.
     *
     * @param subscripts one-based, one for each dimension
     * @return these bits
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public byte getByte(int... subscripts) {
        return (byte) getInt(subscripts);
    }

    /**
     * The real part of one element as a {@code byte}: the low 8 bits of what {@link #getIntAt} gives.
     *
     * @param index zero-based, in storage order
     * @return these bits
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public byte getByteAt(int index) {
        return (byte) getIntAt(index);
    }

    /**
     * The real part of one element, boxed as the Java type closest to the class; unsigned integers as their bits.
     *
     * @param subscripts one-based, one for each dimension
     * @return its value
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public Number get(int... subscripts) {
        return (Number) readAt(subscripts, pointer -> NVKRT.qxGetObjectAt(pointer, Dimensions.given(subscripts), true));
    }

    /**
     * The real part of one element, boxed as the Java type closest to the class; unsigned integers as their bits.
     *
     * @param index zero-based, in storage order
     * @return its value
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public Number getAt(int index) {
        return (Number) readAt(index, pointer -> NVKRT.qxGetObjectAt(pointer, index, true));
    }

    /**
     * The imaginary part of one element.
     *
     * @param subscripts one-based, one for each dimension
     * @return its value
     * @throws IllegalArgumentException for a real array
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public double getImaginary(int... subscripts) {
        return doubleOf(subscripts, false);
    }

    /**
     * The imaginary part of one element.
     *
     * @param index zero-based, in storage order
     * @return its value
     * @throws IllegalArgumentException for a real array
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public double getImaginaryAt(int index) {
        return doubleOf(index, false);
    }

    /**
     * The imaginary part of one element as {@link #getLong} gives the real one.
     *
     * @param subscripts one-based, one for each dimension
     * @return its value
     * @throws IllegalArgumentException for a real array
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public long getImaginaryLong(int... subscripts) {
        return longOf(subscripts, false);
    }

    /**
     * The imaginary part of one element as {@link #getLongAt} gives the real one.
     *
     * @param index zero-based, in storage order
     * @return its value
     * @throws IllegalArgumentException for a real array
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public long getImaginaryLongAt(int index) {
        return longOf(index, false);
    }

    /**
     * Stores the real part of one element. Integer classes of up to 32 bits take the value through a signed 32-bit
     * integer. A zero removes the element of a sparse array whose other part is zero too.
     *
     * @param value the value
     * @param subscripts one-based, one for each dimension
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public void set(double value, int... subscripts) {
        writeAt(subscripts, pointer -> NVKRT.qxSetAt(pointer, Dimensions.given(subscripts), value, true));
    }

    /**
     * Stores the real part of one element; integer classes keep its low bits.
     *
     * @param value the value
     * @param subscripts one-based, one for each dimension
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public void set(long value, int... subscripts) {
        writeAt(subscripts, pointer -> NVKRT.qxSetAt(pointer, Dimensions.given(subscripts), value, true));
    }

    /**
     * Stores the real part of one element, as {@link #set(double, int...)} does.
     *
     * @param index zero-based, in storage order
     * @param value the value
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public void setAt(int index, double value) {
        writeAt(index, pointer -> NVKRT.qxSetAt(pointer, index, value, true));
    }

    /**
     * Stores the real part of one element; integer classes keep its low bits.
     *
     * @param index zero-based, in storage order
     * @param value the value
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public void setAt(int index, long value) {
        writeAt(index, pointer -> NVKRT.qxSetAt(pointer, index, value, true));
    }

    /**
     * Stores the imaginary part of one element, as {@link #set(double, int...)} does the real one.
     *
     * @param value the value
     * @param subscripts one-based, one for each dimension
     * @throws IllegalArgumentException for a real array
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public void setImaginary(double value, int... subscripts) {
        writeAt(subscripts, pointer -> NVKRT.qxSetAt(pointer, Dimensions.given(subscripts), value, false));
    }

    /**
     * Stores the imaginary part of one element; integer classes keep its low bits.
     *
     * @param value the value
     * @param subscripts one-based, one for each dimension
     * @throws IllegalArgumentException for a real array
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public void setImaginary(long value, int... subscripts) {
        writeAt(subscripts, pointer -> NVKRT.qxSetAt(pointer, Dimensions.given(subscripts), value, false));
    }

    /**
     * Stores the imaginary part of one element, as {@link #set(double, int...)} does the real one.
     *
     * @param index zero-based, in storage order
     * @param value the value
     * @throws IllegalArgumentException for a real array
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public void setImaginaryAt(int index, double value) {
        writeAt(index, pointer -> NVKRT.qxSetAt(pointer, index, value, false));
    }

    /**
     * Stores the imaginary part of one element; integer classes keep its low bits.
     *
     * @param index zero-based, in storage order
     * @param value the value
     * @throws IllegalArgumentException for a real array
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public void setImaginaryAt(int index, long value) {
        writeAt(index, pointer -> NVKRT.qxSetAt(pointer, index, value, false));
    }

    /**
     * Stores the real part of all elements, of a sparse array that of all stored elements.
     *
     * @param flat a one-level array of primitive or boxed numbers, in storage order, one for each element
     * @throws IllegalArgumentException for another type or length
     */
    public void setData(Object flat) {
        FlatData.store(this, flat, true);
    }

    /**
     * Stores the imaginary part of all elements, of a sparse array that of all stored elements.
     *
     * @param flat a one-level array of primitive or boxed numbers, in storage order, one for each element
     * @throws IllegalArgumentException for another type or length, or a real array
     */
    public void setImaginaryData(Object flat) {
        FlatData.store(this, flat, false);
    }

    private double doubleOf(int[] subscripts, boolean real) {
        return classId().isUnsigned()
                ? Unsigned.toDouble(longOf(subscripts, real), classId())
                : readAt(subscripts, pointer -> NVKRT.qxGetDoubleAt(pointer, Dimensions.given(subscripts), real));
    }

    private double doubleOf(int index, boolean real) {
        return classId().isUnsigned()
                ? Unsigned.toDouble(longOf(index, real), classId())
                : readAt(index, pointer -> NVKRT.qxGetDoubleAt(pointer, index, real));
    }

    private long longOf(int[] subscripts, boolean real) {
        long bits = readAt(subscripts, pointer -> NVKRT.qxGetLongAt(pointer, Dimensions.given(subscripts), real));
        return Unsigned.mask(bits, classId());
    }

    private long longOf(int index, boolean real) {
        return Unsigned.mask(readAt(index, pointer -> NVKRT.qxGetLongAt(pointer, index, real)), classId());
    }
}
