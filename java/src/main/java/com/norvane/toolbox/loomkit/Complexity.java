package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import java.util.function.IntSupplier;

/** Whether the numbers of an array have an imaginary part. */
public enum Complexity {
    /** Real part only. */
    REAL(NVKRT::qxGetRealID),
    /** Real and imaginary part, in separate blocks of one size. */
    COMPLEX(NVKRT::qxGetComplexID);

    private final IntSupplier code;

    Complexity(IntSupplier code) {
        this.code = code;
    }

    int code() {
        return code.getAsInt();
    }
}
