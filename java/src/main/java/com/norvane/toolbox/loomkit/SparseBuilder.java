package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import java.lang.reflect.Array;
import java.util.Objects;

/** Makes sparse matrices of logical and double elements. */
final class SparseBuilder {
    private SparseBuilder() {}

    /**
     * @param real one-level primitive array of values, or of one value for all positions
     * @param imaginary as long as {@code real}, or null for a real matrix
     */
    static NVBuiltinArray build(
            int[] rows, int[] columns, Object real, Object imaginary, int m, int n, ClassId classId) {
        int[] rowIndex = Objects.requireNonNull(rows, "rows").clone();
        int[] columnIndex = Objects.requireNonNull(columns, "columns").clone();
        int values = Array.getLength(Objects.requireNonNull(real, "values"));
        if (m < 0 || n < 0) {
            throw new IllegalArgumentException("a matrix can't be " + m + "-by-" + n);
        }
        int count = Math.max(Math.max(rowIndex.length, columnIndex.length), values);
        if (imaginary != null && Array.getLength(imaginary) != values) {
            throw new IllegalArgumentException(
                    values + " real parts, but " + Array.getLength(imaginary) + " imaginary parts");
        }
        if (count > 0 && (m == 0 || n == 0)) {
            throw new ArrayIndexOutOfBoundsException("a " + m + "-by-" + n + " matrix has no elements");
        }
        Complexity complexity = imaginary == null ? Complexity.REAL : Complexity.COMPLEX;
        boolean none = count == 0;
        return Wrappers.made(
                NVKRT.qxCreateSparseMatrix(
                        none ? null : rowIndex,
                        none ? null : columnIndex,
                        none ? null : real,
                        none ? null : imaginary,
                        m,
                        n,
                        count,
                        classId.code(),
                        complexity.code()));
    }

    /** A sparse matrix from nested rows. */
    static NVBuiltinArray compress(Object full, ClassId classId) {
        Object rows = new NestedCopy(false).copy(Objects.requireNonNull(full, "full"));
        return Wrappers.made(NVKRT.qxCreateSparseMatrix(rows, null, classId.code(), Complexity.REAL.code()));
    }
}
