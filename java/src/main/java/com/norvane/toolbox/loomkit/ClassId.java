package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import java.util.Arrays;
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

    /** Whether elements are arrays of any class, which may hold arrays again. */
    boolean isCompound() {
        return this == CELL || this == STRUCT;
    }

    /** Whether elements are arrays; the one of a function is its name. */
    boolean hasSlots() {
        return isCompound() || this == FUNCTION;
    }

    /** What one part of an element takes in memory; 0 for classes whose elements are no numbers, truths or units. */
    int elementBytes() {
        return this == LOGICAL ? 1 : this == CHAR ? Character.BYTES : numericBits / Byte.SIZE;
    }

    int numericBits() {
        return numericBits;
    }

    int code() {
        return Codes.BY_CLASS[ordinal()];
    }

    /** A code that native code gives to no class stands for {@link #UNKNOWN}. */
    static ClassId ofCode(int code) {
        return code >= 0 && code < Codes.BY_CODE.length ? Codes.BY_CODE[code] : UNKNOWN;
    }

    /** What native code calls the classes. Filled on first use, since the enum can be used without native code. */
    private static final class Codes {
        private static final int[] BY_CLASS = Arrays.stream(values()).mapToInt(id -> id.code.getAsInt()).toArray();
        private static final ClassId[] BY_CODE = byCode();

        private static ClassId[] byCode() {
            ClassId[] table = new ClassId[Arrays.stream(BY_CLASS).max().orElse(0) + 1];
            Arrays.fill(table, UNKNOWN);
            for (ClassId id : values()) {
                table[BY_CLASS[id.ordinal()]] = id;
            }
            return table;
        }
    }
}
