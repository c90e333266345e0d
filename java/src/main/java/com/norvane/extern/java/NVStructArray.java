package com.norvane.extern.java;

import java.util.Arrays;
import java.util.LinkedHashSet;
import java.util.Map;
import java.util.Objects;
import java.util.Set;

/**
 * An array of elements with named fields, as plain Java data: no native memory stands behind it.
 *
 * <p>Values are stored element by element in column-major order, the fields of one element next to one another. The
 * array itself can't be changed; a value that is a Java array still can.
 */
public final class NVStructArray {
    private final int[] dimensions;
    private final String[] fieldNames;
    private final Object[] values;

    /**
     * An array of any number of dimensions.
     *
     * @param dimensions extents, one at least; one extent n stands for 1-by-n
     * @param fieldNames different names
     * @param values the values, field by field for the first element, then for the next one in column-major order;
     *     null is allowed
     * @throws IllegalArgumentException for a negative extent, another number of values, or a name that is empty, no
     *     well-formed text, or there twice
     */
    public NVStructArray(int[] dimensions, String[] fieldNames, Object... values) {
        this.fieldNames = checkedNames(fieldNames);
        this.values = Arrays.copyOf(Objects.requireNonNull(values, "values"), values.length, Object[].class);
        this.dimensions = Shape.checked(dimensions, this.fieldNames.length, values.length);
    }

    /**
     * A 1-by-1 struct.
     *
     * @param fields values by name, in the order of the map
     * @return a new struct
     * @throws IllegalArgumentException for an empty name
     */
    public static NVStructArray of(Map<String, ?> fields) {
        String[] names = Objects.requireNonNull(fields, "fields").keySet().toArray(new String[0]);
        Object[] values = new Object[names.length];
        for (int i = 0; i < names.length; i++) {
            values[i] = fields.get(names[i]);
        }
        return new NVStructArray(new int[] {1, 1}, names, values);
    }

    private static String[] checkedNames(String[] names) {
        Set<String> seen = new LinkedHashSet<>();
        for (String name : Objects.requireNonNull(names, "fieldNames")) {
            if (name == null || name.isEmpty() || name.indexOf('\0') >= 0 || hasHalfPair(name)) {
                throw new IllegalArgumentException("a field can't be called \"" + name + "\"");
            }
            if (!seen.add(name)) {
                throw new IllegalArgumentException("two fields are called " + name);
            }
        }
        return seen.toArray(new String[0]);
    }

    private static boolean hasHalfPair(String name) {
        return name.codePoints().anyMatch(point -> point >= 0xD800 && point <= 0xDFFF);
    }

    /**
     * The names of the fields, in their order.
     *
     * @return a new array
     */
    public String[] fieldNames() {
        return fieldNames.clone();
    }

    /**
     * How many fields each element has.
     *
     * @return 0 or more
     */
    public int numberOfFields() {
        return fieldNames.length;
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
     * @return the number of elements, each of which has all fields
     */
    public int numberOfElements() {
        return Shape.count(dimensions);
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
     * One value in the stored order.
     *
     * @param slot zero-based: the number of the element times the number of fields, plus the number of the field
     * @return the value
     * @throws ArrayIndexOutOfBoundsException when there is no such value
     */
    public Object get(int slot) {
        return values[slot];
    }

    /**
     * One field of one element.
     *
     * @param field its name
     * @param index zero-based number of the element, in column-major order
     * @return the value
     * @throws IllegalArgumentException when there is no such field
     * @throws ArrayIndexOutOfBoundsException when there is no such element
     */
    public Object get(String field, int index) {
        int number = Arrays.asList(fieldNames).indexOf(field);
        if (number < 0) {
            throw new IllegalArgumentException("the struct has no field " + field);
        }
        if (index < 0 || index >= numberOfElements()) {
            throw new ArrayIndexOutOfBoundsException("element " + index + " of " + numberOfElements());
        }
        return values[index * fieldNames.length + number];
    }

    /**
     * All values in the stored order.
     *
     * @return a new array
     */
    public Object[] getFlatArray() {
        return values.clone();
    }

    /** Equal extents, field names in equal order, and values, Java arrays being compared by their contents. */
    @Override
    public boolean equals(Object other) {
        return other instanceof NVStructArray
                && Arrays.equals(dimensions, ((NVStructArray) other).dimensions)
                && Arrays.equals(fieldNames, ((NVStructArray) other).fieldNames)
                && Arrays.deepEquals(values, ((NVStructArray) other).values);
    }

    @Override
    public int hashCode() {
        return 31 * (31 * Arrays.hashCode(dimensions) + Arrays.hashCode(fieldNames)) + Arrays.deepHashCode(values);
    }

    /** The extents, the field names, and the values in the stored order, in one line. */
    @Override
    public String toString() {
        return Shape.text(dimensions) + " struct " + Arrays.toString(fieldNames) + " " + Shape.list(values);
    }
}
