package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;
import java.util.Arrays;

/**
 * The serialised form of arrays, by which they are stored, compared, ordered and hashed.
 *
 * <p>Native code gives the same answer for an array that can't have a form and for one whose form finds no memory, and
 * for bytes that are no form and an array that finds no memory. Here they are told apart: the second of each pair is an
 * {@link OutOfMemoryError}.
 */
final class SerialForm {
    /** More than native code needs for an array without its elements. */
    private static final int BYTES_OF_AN_ARRAY = 512;

    private static final int BYTES_OF_A_SLOT = 8;
    private static final byte NO_ARRAY = (byte) 0xF6;

    private SerialForm() {}

    /**
     * @throws UnsupportedOperationException for an array that can't have a form
     * @throws OutOfMemoryError for want of memory
     */
    static byte[] of(NVBuiltinArray array) {
        byte[] form = array.read(NVKRT::qxSerialize);
        if (form.length == 0 && array.classId() != ClassId.UNKNOWN) {
            FormSize size = FormSize.of(array);
            if (size.refusal() != null) {
                throw new UnsupportedOperationException(size.refusal());
            }
            throw withoutMemory(size);
        }
        return form;
    }

    /**
     * @throws IllegalArgumentException for bytes that are no form
     * @throws OutOfMemoryError for want of memory
     */
    static NVBuiltinArray read(byte[] form) {
        NativePtr pointer = NVKRT.qxDeserialize(form);
        if (isNone(pointer)) {
            requireMemory(mostBytesOf(form));
            pointer = NVKRT.qxDeserialize(form);
        }
        if (isNone(pointer)) {
            throw new IllegalArgumentException("the bytes are not the serialised form of an array");
        }
        return Wrappers.of(pointer);
    }

    private static boolean isNone(NativePtr pointer) {
        return pointer == null || pointer.get() == 0;
    }

    /** Untouched zeros cost no more than the room for them. */
    private static void requireMemory(long bytes) {
        int[] extents = {1, (int) Math.min(bytes / Double.BYTES + 1, Integer.MAX_VALUE)};
        Wrappers.made(NVKRT.qxCreateArray(extents, ClassId.DOUBLE.code(), 0)).close();
    }

    /** An upper bound on the native memory that reading takes: elements, slots, and the arrays themselves. */
    private static long mostBytesOf(byte[] form) {
        long most = BYTES_OF_AN_ARRAY + 2L * form.length;
        for (int i = 0; i + 1 < form.length; i++) {
            boolean maybeArray = (form[i] & 0xF8) == 0x80 && form[i + 1] >= 0 && form[i + 1] < 0x18;
            most += maybeArray ? BYTES_OF_AN_ARRAY : form[i] == NO_ARRAY ? BYTES_OF_A_SLOT : 0;
        }
        return most;
    }

    /** 0 for an array that can't have a form. */
    static int hash(NVBuiltinArray array) {
        int hash = array.read(NVKRT::qxGetHashValue);
        if (hash == 0 && array.classId() != ClassId.UNKNOWN && nativeOrder(array, array) != 0) {
            requireNone(array);
        }
        return hash;
    }

    static boolean areEqual(NVBuiltinArray one, NVBuiltinArray other) {
        return one.classId() == other.classId()
                && one.isSparse() == other.isSparse()
                && Arrays.equals(one.dimensions(), other.dimensions())
                && compare(one, other) == 0;
    }

    /**
     * Native code takes the first array whose form it can't make for the lesser one. The first says so before the second
     * has taken any memory: so the array that is said to be less is asked for its form again, as the first.
     */
    static int compare(NVBuiltinArray one, NVBuiltinArray other) {
        int order = nativeOrder(one, other);
        if (order < 0) {
            hash(one);
        } else if (order > 0) {
            if (nativeOrder(other, one) > 0) {
                throw withoutMemory(FormSize.of(one));
            }
            hash(other);
        }
        return order;
    }

    private static int nativeOrder(NVBuiltinArray one, NVBuiltinArray other) {
        ValueTree tree = one.tree();
        boolean inOrder = tree == null || other.tree() == null || tree.serial <= other.tree().serial;
        NVBuiltinArray first = inOrder ? one : other;
        NVBuiltinArray second = inOrder ? other : one;
        return first.read(
                a -> second.read(b -> inOrder ? NVKRT.qxCompareArray(a, b) : NVKRT.qxCompareArray(b, a)));
    }

    /** Called for an array whose form could not be made. */
    private static void requireNone(NVBuiltinArray array) {
        FormSize size = FormSize.of(array);
        if (size.refusal() == null) {
            throw withoutMemory(size);
        }
    }

    private static OutOfMemoryError withoutMemory(FormSize size) {
        return new OutOfMemoryError("no memory for a serialised form of " + size.bytes() + " bytes");
    }
}
