package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import java.util.function.IntSupplier;

/** What the elements of an array are. */
public enum ClassId {
    /** No class: an empty array that was never given one. */
    UNKNOWN(NVKRT::qxGetUnknownClassID, 0, true),
    /** Elements are arrays of any class. */
    CELL(NVKRT::qxGetCellClassID, 0, true),
    /** Elements have named fields, each an array of any class. */
    STRUCT(NVKRT::qxGetStructClassID, 0, true),
    /** True or false. */
    LOGICAL(NVKRT::qxGetLogicalClassID, 0, true),
    /** UTF-16 code units. */
    CHAR(NVKRT::qxGetCharClassID, 0, true),
    /** 64-bit floating point. */
    DOUBLE(NVKRT::qxGetDoubleClassID, 64, true),
    /** 32-bit floating point. */
    SINGLE(NVKRT::qxGetSingleClassID, 32, true),
    /** 8-bit integers, signed. */
    INT8(NVKRT::qxGetInt8ClassID, 8, true),
    /** 8-bit integers, unsigned. */
    UINT8(NVKRT::qxGetUint8ClassID, 8, false),
    /** 16-bit integers, signed. */
    INT16(NVKRT::qxGetInt16ClassID, 16, true),
    /** 16-bit integers, unsigned. */
    UINT16(NVKRT::qxGetUint16ClassID, 16, false),
    /** 32-bit integers, signed. */
    INT32(NVKRT::qxGetInt32ClassID, 32, true),
    /** 32-bit integers, unsigned. */
    UINT32(NVKRT::qxGetUint32ClassID, 32, false),
    /** 64-bit integers, signed. */
    INT64(NVKRT::qxGetInt64ClassID, 64, true),
    /** 64-bit integers, unsigned. */
    UINT64(NVKRT::qxGetUint64ClassID, 64, false),
    /** A function of a component, by its name. */
    FUNCTION(NVKRT::qxGetFunctionClassID, 0, true),
    /** A value that only native code can look into. */
    OPAQUE(NVKRT::qxGetOpaqueClassID, 0, true),
    /** An object of the runtime. */
    OBJECT(NVKRT::qxGetObjectClassID, 0, true);

    private final IntSupplier code;
    private final int numericBits;
    private final boolean signed;

    ClassId(IntSupplier code, int numericBits, boolean signed) {
        this.code = code;
        this.numericBits = numericBits;
        this.signed = signed;
    }

    /**
     * Whether elements are numbers. Logical and char elements are not.
     *
     * @return true for the classes from {@link #DOUBLE} to {@link #UINT64}
     */
    public boolean isNumeric() {
        return numericBits != 0;
    }

    /**
     * Whether elements are unsigned integers, which Java has no primitive type for.
     *
     * @return true for {@link #UINT8}, {@link #UINT16}, {@link #UINT32} and {@link #UINT64}
     */
    public boolean isUnsigned() {
        return !signed;
    }

    /** Whether elements are arrays themselves. */
    boolean isCompound() {
        return this == CELL || this == STRUCT;
    }

    int numericBits() {
        return numericBits;
    }

    int code() {
        return code.getAsInt();
    }

    static ClassId ofCode(int code) {
        for (ClassId id : values()) {
            if (id.code() == code) {
                return id;
            }
        }
        return UNKNOWN;
    }
}
