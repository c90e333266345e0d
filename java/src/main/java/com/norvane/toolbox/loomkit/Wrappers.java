package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;

/** The wrapper class of each array class. */
final class Wrappers {
    private Wrappers() {}

    /** The wrapper of a native array, which it takes over. */
    static NVBuiltinArray of(NativePtr pointer) {
        ClassId id = classOf(pointer);
        switch (id) {
            case CELL:
                return new NVCellArray(pointer, id);
            case STRUCT:
                return new NVStructArray(pointer, id);
            case LOGICAL:
                return new NVLogicalArray(pointer, id);
            case CHAR:
                return new NVCharArray(pointer, id);
            case FUNCTION:
                return new NVFunctionHandle(pointer, id);
            default:
                return id.isNumeric() ? new NVNumericArray(pointer, id) : new NVBuiltinArray(pointer, id);
        }
    }

    static ClassId classOf(NativePtr pointer) {
        return ClassId.ofCode(NVKRT.qxGetClassID(pointer));
    }

    /** The wrapper of a native array that was just made, which it takes over. */
    static NVBuiltinArray made(NativePtr pointer) {
        if (pointer == null || pointer.get() == 0) {
            throw new OutOfMemoryError("the native array could not be made");
        }
        return of(pointer);
    }
}
