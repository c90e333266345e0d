package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;

/** The wrapper class of each array class. */
final class Wrappers {
    private Wrappers() {}

    /** The wrapper of a native array, which it takes over. */
    static NVBuiltinArray of(NativePtr pointer) {
        ClassId id = ClassId.ofCode(NVKRT.qxGetClassID(pointer));
        switch (id) {
            case CELL:
                return new NVCellArray(pointer);
            case STRUCT:
                return new NVStructArray(pointer);
            case LOGICAL:
                return new NVLogicalArray(pointer);
            case CHAR:
                return new NVCharArray(pointer);
            case FUNCTION:
                return new NVFunctionHandle(pointer);
            default:
                return id.isNumeric() ? new NVNumericArray(pointer) : new NVBuiltinArray(pointer);
        }
    }

    /** The wrapper of a native array that was just made, which it takes over. */
    static NVBuiltinArray made(NativePtr pointer) {
        if (pointer == null || pointer.get() == 0) {
            throw new OutOfMemoryError("the native array could not be made");
        }
        return of(pointer);
    }
}
