package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;
import java.util.Objects;

/**
 * An array of arrays.
 *
 * <p>An element that is read shares data with the cell: what is changed through it changes in the cell too. An array
 * that is stored is copied. An element that was never stored reads as a 0-by-0 double array.
 */
public final class NVCellArray extends NVBuiltinArray {
    private static final long serialVersionUID = 1L;

    NVCellArray(NativePtr pointer) {
        super(pointer);
    }

    NVCellArray(NativePtr pointer, ClassId classId) {
        super(pointer, classId);
    }

    /**
     * A cell without contents.
     *
     * @param dimensions extents; none give 0-by-0, one gives a row
     * @return a new cell
     * @throws IllegalArgumentException for a negative extent or more than 2^31-1 elements
     */
    public static NVCellArray empty(int... dimensions) {
        int[] extents = Dimensions.checked(dimensions);
        NVCellArray cell = (NVCellArray) Wrappers.made(NVKRT.qxCreateArray(extents, ClassId.CELL.code(), 0));
        cell.stateLevels(1);
        return cell;
    }

    /**
     * A 1-by-n cell.
     *
     * @param elements n values: plain Java data or arrays
     * @return a new cell
     * @throws IllegalArgumentException for a value that is no plain data
     */
    public static NVCellArray row(Object... elements) {
        return filled(new int[] {1, Objects.requireNonNull(elements, "elements").length}, elements);
    }

    /**
     * An n-by-1 cell.
     *
     * @param elements n values: plain Java data or arrays
     * @return a new cell
     * @throws IllegalArgumentException for a value that is no plain data
     */
    public static NVCellArray column(Object... elements) {
        return filled(new int[] {Objects.requireNonNull(elements, "elements").length, 1}, elements);
    }

    /**
     * A cell from a pure Java one.
     *
     * @param value extents and elements, which are copied
     * @return a new cell
     * @throws IllegalArgumentException for elements that are no plain data
     */
    public static NVCellArray of(com.norvane.extern.java.NVCellArray value) {
        return (NVCellArray) NVBuiltinArray.of((Object) Objects.requireNonNull(value, "value"));
    }

    private static NVCellArray filled(int[] extents, Object[] elements) {
        NVCellArray cell = empty(extents);
        try {
            for (int i = 0; i < elements.length; i++) {
                cell.setAt(i, elements[i]);
            }
        } catch (RuntimeException | Error failure) {
            cell.close();
            throw failure;
        }
        return cell;
    }

    /**
     * One element.
     *
     * @param subscripts one-based, one for each dimension
     * @return a new array that shares data with the cell, the caller's to close
     * @throws IndexOutOfBoundsException when there is no such element
     */
    public NVArray get(int... subscripts) {
        return readAt(
                subscripts,
                pointer -> Slots.get(
                        this, pointer, NVKRT.qxCalcSingleSubscript(pointer, Dimensions.given(subscripts))));
    }

    /**
     * One element.
     *
     * @param index zero-based, in storage order
     * @return a new array that shares data with the cell, the caller's to close
     * @throws IndexOutOfBoundsException when there is no such element
     */
    public NVArray getAt(int index) {
        return readAt(index, pointer -> Slots.get(this, pointer, index));
    }

    /**
     * Stores one element.
     *
     * @param value plain Java data as for {@link NVBuiltinArray#of}, or an array, which is copied
     * @param subscripts one-based, one for each dimension
     * @throws IllegalArgumentException for what is no plain data, or nested too deeply
     * @throws IndexOutOfBoundsException when there is no such element
     */
    public void set(Object value, int... subscripts) {
        try (Slots.Value checked = new Slots.Value(value)) {
            writeAt(
                    subscripts,
                    pointer -> {
                        int index = NVKRT.qxCalcSingleSubscript(pointer, Dimensions.given(subscripts));
                        checked.store(this, pointer, index);
                    });
        }
    }

    /**
     * Stores one element.
     *
     * @param index zero-based, in storage order
     * @param value plain Java data as for {@link NVBuiltinArray#of}, or an array, which is copied
     * @throws IllegalArgumentException for what is no plain data, or nested too deeply
     * @throws IndexOutOfBoundsException when there is no such element
     */
    public void setAt(int index, Object value) {
        try (Slots.Value checked = new Slots.Value(value)) {
            writeAt(index, pointer -> checked.store(this, pointer, index));
        }
    }

    @Override
    public Object toObject() {
        Object elements = super.toObject();
        Slots.joinAll(elements, this);
        return elements;
    }

    @Override
    public NVCellArray duplicate() {
        return (NVCellArray) super.duplicate();
    }

    @Override
    public NVCellArray sharedCopy() {
        return (NVCellArray) super.sharedCopy();
    }
}
