package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;
import java.util.Arrays;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Map;
import java.util.Objects;
import java.util.Set;

/**
 * An array of elements with named fields, each field an array.
 *
 * <p>A field that is read shares data with the struct: what is changed through it changes in the struct too. An array
 * that is stored is copied. A field that was never stored reads as a 0-by-0 double array.
 */
public final class NVStructArray extends NVBuiltinArray {
    private static final long serialVersionUID = 1L;

    NVStructArray(NativePtr pointer) {
        super(pointer);
    }

    NVStructArray(NativePtr pointer, ClassId classId) {
        super(pointer, classId);
    }

    /**
     * A struct array without contents.
     *
     * @param dimensions extents; none give 0-by-0, one gives a row
     * @param fieldNames different names
     * @return a new array
     * @throws IllegalArgumentException for a negative extent, more than 2^31-1 fields in all, or a name that is empty
     *     or stands there twice
     */
    public static NVStructArray create(int[] dimensions, String... fieldNames) {
        int[] extents = Dimensions.checked(dimensions);
        Set<String> names = new LinkedHashSet<>();
        for (String name : Objects.requireNonNull(fieldNames, "fieldNames")) {
            if (!names.add(Text.checkedName(name, "field name"))) {
                throw new IllegalArgumentException("two fields are called " + name);
            }
        }
        Dimensions.checkCount(new long[] {names.size(), Dimensions.count(extents)}, 2);
        NativePtr pointer = NVKRT.qxCreateStructArray(extents, names.toArray(new String[0]));
        NVStructArray struct = (NVStructArray) Wrappers.made(pointer);
        struct.stateLevels(1);
        return struct;
    }

    /**
     * A 1-by-1 struct.
     *
     * @param fields values by name, in the order of the map: plain Java data or arrays
     * @return a new array
     * @throws IllegalArgumentException for a value that is no plain data, or a bad name
     */
    public static NVStructArray of(Map<String, ?> fields) {
        Objects.requireNonNull(fields, "fields");
        NVStructArray struct = create(new int[] {1, 1}, fields.keySet().toArray(new String[0]));
        return filled(struct, () -> fields.forEach((name, value) -> struct.setAt(name, 0, value)));
    }

    /**
     * A struct array from a pure Java one.
     *
     * @param value extents, names and field values, which are copied: plain Java data or, as {@link #toObject} gives
     *     them, arrays; what is a pure Java cell or struct itself holds plain data only
     * @return a new array
     * @throws IllegalArgumentException for values that are no plain data
     */
    public static NVStructArray of(com.norvane.extern.java.NVStructArray value) {
        Object[] fields = Objects.requireNonNull(value, "value").getFlatArray();
        if (Arrays.stream(fields).noneMatch(NVBuiltinArray.class::isInstance)) {
            return (NVStructArray) NVBuiltinArray.of((Object) value);
        }
        NVStructArray struct = create(value.getDimensions(), value.fieldNames());
        return filled(struct, () -> {
            for (int slot = 0; slot < fields.length; slot++) {
                struct.store(slot, fields[slot]);
            }
        });
    }

    private void store(int slot, Object value) {
        try (Slots.Value checked = new Slots.Value(value)) {
            write(pointer -> checked.store(this, pointer, slot));
        }
    }

    /** The struct, which is closed when it can't be filled. */
    private static NVStructArray filled(NVStructArray struct, Runnable filling) {
        try {
            filling.run();
        } catch (RuntimeException | Error failure) {
            struct.close();
            throw failure;
        }
        return struct;
    }

    /**
     * The names of the fields, in their order.
     *
     * @return an unmodifiable list
     */
    public List<String> fieldNames() {
        return List.of(read(NVKRT::qxGetFieldNames));
    }

    /**
     * How many fields each element has.
     *
     * @return 0 or more
     */
    public int numberOfFields() {
        return read(NVKRT::qxGetNumberOfFields);
    }

    /**
     * Whether elements have a field.
     *
     * @param field its name
     * @return true when they do
     */
    public boolean hasField(String field) {
        return fieldNames().contains(Objects.requireNonNull(field, "field"));
    }

    /**
     * A field of the first element, of a 1-by-1 struct the only one.
     *
     * @param field its name
     * @return a new array that shares data with the struct, the caller's to close
     * @throws IllegalArgumentException when there is no such field
     * @throws IndexOutOfBoundsException when the array is empty
     */
    public NVArray get(String field) {
        return getAt(field, 0);
    }

    /**
     * A field of one element.
     *
     * @param field its name
     * @param subscripts one-based, one for each dimension
     * @return a new array that shares data with the struct, the caller's to close
     * @throws IllegalArgumentException when there is no such field
     * @throws IndexOutOfBoundsException when there is no such element
     */
    public NVArray get(String field, int... subscripts) {
        return readAt(
                subscripts,
                pointer ->
                        Slots.get(this, pointer, slotAt(pointer, field, subscripts)));
    }

    /**
     * A field of one element.
     *
     * @param field its name
     * @param index zero-based, in storage order of the elements
     * @return a new array that shares data with the struct, the caller's to close
     * @throws IllegalArgumentException when there is no such field
     * @throws IndexOutOfBoundsException when there is no such element
     */
    public NVArray getAt(String field, int index) {
        return readAt(index, pointer -> Slots.get(this, pointer, slotAt(pointer, field, index)));
    }

    /**
     * Stores a field of the first element.
     *
     * @param field its name
     * @param value plain Java data as for {@link NVBuiltinArray#of}, or an array, which is copied
     * @throws IllegalArgumentException when there is no such field, or for what is no plain data
     * @throws IndexOutOfBoundsException when the array is empty
     */
    public void set(String field, Object value) {
        setAt(field, 0, value);
    }

    /**
     * Stores a field of one element.
     *
     * @param field its name
     * @param value plain Java data as for {@link NVBuiltinArray#of}, or an array, which is copied
     * @param subscripts one-based, one for each dimension
     * @throws IllegalArgumentException when there is no such field, or for what is no plain data
     * @throws IndexOutOfBoundsException when there is no such element
     */
    public void set(String field, Object value, int... subscripts) {
        try (Slots.Value checked = new Slots.Value(value)) {
            writeAt(
                    subscripts,
                    pointer -> {
                        int slot = slotAt(pointer, field, subscripts);
                        checked.store(this, pointer, slot);
                    });
        }
    }

    /**
     * Stores a field of one element.
     *
     * @param field its name
     * @param index zero-based, in storage order of the elements
     * @param value plain Java data as for {@link NVBuiltinArray#of}, or an array, which is copied
     * @throws IllegalArgumentException when there is no such field, or for what is no plain data
     * @throws IndexOutOfBoundsException when there is no such element
     */
    public void setAt(String field, int index, Object value) {
        try (Slots.Value checked = new Slots.Value(value)) {
            writeAt(index, pointer -> checked.store(this, pointer, slotAt(pointer, field, index)));
        }
    }

    /**
     * The array as a pure Java value, whose field values are the arrays that {@link #getAt} gives.
     *
     * @return a new value; each array in it shares data with the struct and is the caller's to close
     */
    @Override
    public com.norvane.extern.java.NVStructArray toObject() {
        return read(
                pointer -> {
                    String[] names = NVKRT.qxGetFieldNames(pointer);
                    Object[] values = new Object[names.length * NVKRT.qxGetNumberOfElements(pointer)];
                    for (int slot = 0; slot < values.length; slot++) {
                        values[slot] = Slots.get(this, pointer, slot);
                    }
                    return new com.norvane.extern.java.NVStructArray(
                            NVKRT.qxGetDimensions(pointer), names, values);
                });
    }

    /** The native count of elements starts at one here. */
    private static int slotAt(NativePtr pointer, String field, int index) {
        if (index == Integer.MAX_VALUE) {
            throw new ArrayIndexOutOfBoundsException("Index out of bounds");
        }
        try {
            return NVKRT.qxCalcStructSingleSubscript(pointer, field, index + 1);
        } catch (IllegalArgumentException failure) {
            throw fieldFailure(pointer, field, failure);
        }
    }

    private static int slotAt(NativePtr pointer, String field, int[] subscripts) {
        try {
            return NVKRT.qxCalcStructSingleSubscript(pointer, field, Dimensions.given(subscripts));
        } catch (IllegalArgumentException failure) {
            throw fieldFailure(pointer, field, failure);
        }
    }

    private static IllegalArgumentException fieldFailure(
            NativePtr pointer, String field, IllegalArgumentException failure) {
        String fields = String.join(", ", NVKRT.qxGetFieldNames(pointer));
        return new IllegalArgumentException(
                failure.getMessage() + ": '" + field + "', the fields being [" + fields + "]", failure);
    }

    @Override
    public NVStructArray duplicate() {
        return (NVStructArray) super.duplicate();
    }

    @Override
    public NVStructArray sharedCopy() {
        return (NVStructArray) super.sharedCopy();
    }
}
