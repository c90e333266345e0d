package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;

/** The elements of cells and the fields of structs: arrays in numbered slots of another array. */
final class Slots {
    private Slots() {}

    /**
     * A view of the array in a slot, which shares data with its parent.
     *
     * @param slot zero-based
     */
    static NVArray get(NVBuiltinArray parent, NativePtr pointer, int slot) {
        Object element = NVKRT.qxGetCell(pointer, slot);
        join(element, parent);
        return (NVArray) element;
    }

    /** Makes the wrappers in an array of any depth members of their parent's tree. */
    static void joinAll(Object nested, NVBuiltinArray parent) {
        if (nested instanceof Object[]) {
            for (Object element : (Object[]) nested) {
                joinAll(element, parent);
            }
        } else {
            join(nested, parent);
        }
    }

    private static void join(Object element, NVBuiltinArray parent) {
        if (element instanceof NVBuiltinArray && ((NVBuiltinArray) element).tree() != null) {
            ((NVBuiltinArray) element).joinTree(parent.tree(), parent.depth() + 1);
        }
    }

    /** A value on its way into a slot: what native code gets for it, its levels, and what is to be closed after. */
    static final class Value implements AutoCloseable {
        private final JavaData data;

        /**
         * An array is copied: sharing its data would let a cell come to contain itself.
         *
         * @throws IllegalArgumentException for what is no plain data
         */
        Value(Object value) {
            data = JavaData.of(value);
        }

        /** Called within {@link NVBuiltinArray#write}. */
        void store(NVBuiltinArray parent, NativePtr pointer, int slot) {
            parent.tree().nest(parent.depth(), data.levels());
            NVKRT.qxSetCell(pointer, slot, data.value());
        }

        @Override
        public void close() {
            data.close();
        }
    }
}
