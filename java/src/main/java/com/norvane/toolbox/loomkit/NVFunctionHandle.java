package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;

/** A function of a component as a value, to be passed to functions that call it. Functions give such handles. */
public final class NVFunctionHandle extends NVBuiltinArray {
    private static final long serialVersionUID = 1L;

    NVFunctionHandle(NativePtr pointer) {
        super(pointer);
    }

    NVFunctionHandle(NativePtr pointer, ClassId classId) {
        super(pointer, classId);
    }

    /**
     * The name of the function.
     *
     * @return the name
     */
    public String name() {
        try (NVArray name = (NVArray) read(pointer -> NVKRT.qxGetObjectAt(pointer, 0, true))) {
            return name.asChar().toJavaString();
        }
    }

    @Override
    public NVFunctionHandle duplicate() {
        return (NVFunctionHandle) super.duplicate();
    }

    @Override
    public NVFunctionHandle sharedCopy() {
        return (NVFunctionHandle) super.sharedCopy();
    }
}
