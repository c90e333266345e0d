package com.norvane.toolbox.loomkit.bench;

import com.norvane.toolbox.loomkit.internal.NativePtr;

/**
 * Calls the natives of single elements as an application does, from compiled Java code. The benchmark program binds
 * them, each to the export of its family.
 */
final class ElementLoops {
    private ElementLoops() {}

    /** Opens the handle and does nothing else: the floor. */
    static native double open(NativePtr handle, int index, boolean real);

    static native double get(NativePtr handle, int index, boolean real);

    static native double get(NativePtr handle, int[] subscripts, boolean real);

    static native void set(NativePtr handle, int index, double value, boolean real);

    static native void set(NativePtr handle, int[] subscripts, double value, boolean real);

    static double open(NativePtr handle, int[] indices) {
        double sum = 0;
        for (int index : indices) {
            sum += open(handle, index, true);
        }
        return sum;
    }

    static double get(NativePtr handle, int[] indices) {
        double sum = 0;
        for (int index : indices) {
            sum += get(handle, index, true);
        }
        return sum;
    }

    static double get(NativePtr handle, int[][] places) {
        double sum = 0;
        for (int[] subscripts : places) {
            sum += get(handle, subscripts, true);
        }
        return sum;
    }

    static double set(NativePtr handle, int[] indices) {
        for (int index : indices) {
            set(handle, index, 2.5, true);
        }
        return indices.length;
    }

    static double set(NativePtr handle, int[][] places) {
        for (int[] subscripts : places) {
            set(handle, subscripts, 2.5, true);
        }
        return places.length;
    }
}
