package com.norvane.toolbox.loomkit.internal;

import java.io.InputStream;
import java.util.ListIterator;
import java.util.concurrent.Callable;

/**
 * The native methods. They check sizes and indices, but neither null handles nor foreign ones, lengths or counts:
 * nothing but the public API may call them.
 *
 * <p>A single {@code int} index is zero-based in stored column-major order; a subscript array is one-based with one
 * subscript per dimension. A boolean named {@code real} selects the real part, or the imaginary part when false.
 * Each array behind a returned {@link NativePtr} owes one {@code qxDestroyArray}.
 */
public final class NVKRT {
    static {
        NativeLoader.load();
    }

    private NVKRT() {}

    // Life of the runtime, evaluation, instances, printing.

    public static native boolean vrlInitializeApplication(String[] options);

    public static native boolean vrlTerminateApplication();

    public static native void lock();

    public static native void unlock();

    public static native boolean vrlIsStandaloneMode();

    public static native boolean vrlIsKcc();

    public static native boolean vrlIsKRTInitialized();

    public static native boolean vrlIsJVMEnabled();

    public static native boolean vrlIsNoDisplaySet();

    public static native String vrlGetLogFileName();

    /** The environment of the process; an unset name gives the empty string. */
    public static native String getenv(String name);

    public static native void vrlAddCanonicalPathMacro(String first, String second);

    /** Each iterator must yield exactly as many elements as its count says. */
    public static native void vrlFeval(
            NativePtr instance, String function, int nlhs, ListIterator<?> outputs, int nrhs, ListIterator<?> inputs);

    /**
     * @param archive read only during the call, exactly {@code length} bytes of it
     * @param second yields the stream for ordinary output
     * @param first yields the stream for errors and warnings
     */
    public static native NativePtr vrlInitializeComponentInstance(
            boolean useCache,
            int reserved,
            String componentText,
            String extractTo,
            InputStream archive,
            int length,
            Callable<?> second,
            Callable<?> first);

    public static native boolean vrlTerminateInstance(NativePtr instance);

    public static native void vrlWaitForFiguresToDie(NativePtr instance);

    public static native NativePtr vrlGetActiveKRT();

    /** The first handler gets errors and warnings, the second ordinary output. */
    public static native void vrlSetDefaultPrintHandlers(Callable<?> first, Callable<?> second);

    public static native void vrlResetDefaultPrintHandlers();

    // Creation from Java data.

    public static native NativePtr qxCreateArray(int[] dims, int classId, int complexity);

    public static native NativePtr qxCreateNumericArray(
            int[] dims, Object realData, Object imagData, int classId, int complexity);

    public static native NativePtr qxCreateStructArray(int[] dims, String[] fieldNames);

    public static native NativePtr qxCreateSparseMatrix(
            int[] rowIndex,
            int[] colIndex,
            Object realData,
            Object imagData,
            int rows,
            int columns,
            int nzmax,
            int classId,
            int complexity);

    public static native NativePtr qxCreateSparseMatrix(Object realData, Object imagData, int classId, int complexity);

    public static native NativePtr qxObject2qxArray(Object realData, Object imagData, int classId, int complexity);

    public static native NativePtr qxScalar2qxArray(double real, double imag, int classId, int complexity);

    public static native NativePtr qxScalar2qxArray(float real, float imag, int classId, int complexity);

    public static native NativePtr qxScalar2qxArray(long real, long imag, int classId, int complexity);

    public static native NativePtr qxScalar2qxArray(int real, int imag, int classId, int complexity);

    public static native NativePtr qxScalar2qxArray(short real, short imag, int classId, int complexity);

    public static native NativePtr qxScalar2qxArray(byte real, byte imag, int classId, int complexity);

    public static native NativePtr qxScalar2qxArray(boolean real, boolean imag, int classId, int complexity);

    public static native NativePtr qxScalar2qxArray(char value, int classId);

    // Whole arrays to Java.

    public static native Object qxArrayToBooleanArray(NativePtr array, boolean real);

    public static native Object qxArrayToByteArray(NativePtr array, boolean real);

    public static native Object qxArrayToShortArray(NativePtr array, boolean real);

    public static native Object qxArrayToIntArray(NativePtr array, boolean real);

    public static native Object qxArrayToLongArray(NativePtr array, boolean real);

    public static native Object qxArrayToFloatArray(NativePtr array, boolean real);

    public static native Object qxArrayToDoubleArray(NativePtr array, boolean real);

    public static native Object qxArrayToCharArray(NativePtr array, boolean real);

    public static native boolean[] qxGetBooleanData(NativePtr array, boolean real);

    public static native byte[] qxGetByteData(NativePtr array, boolean real);

    public static native short[] qxGetShortData(NativePtr array, boolean real);

    public static native int[] qxGetIntData(NativePtr array, boolean real);

    public static native long[] qxGetLongData(NativePtr array, boolean real);

    public static native float[] qxGetFloatData(NativePtr array, boolean real);

    public static native double[] qxGetDoubleData(NativePtr array, boolean real);

    public static native char[] qxGetCharData(NativePtr array, boolean real);

    public static native Object qxArrayToBooleanObjectArray(NativePtr array, boolean real);

    public static native Object qxArrayToByteObjectArray(NativePtr array, boolean real);

    public static native Object qxArrayToCharacterObjectArray(NativePtr array, boolean real);

    public static native Object qxArrayToDoubleObjectArray(NativePtr array, boolean real);

    public static native Object qxArrayToFloatObjectArray(NativePtr array, boolean real);

    public static native Object qxArrayToIntegerObjectArray(NativePtr array, boolean real);

    public static native Object qxArrayToLongObjectArray(NativePtr array, boolean real);

    public static native Object qxArrayToShortObjectArray(NativePtr array, boolean real);

    public static native String qxArrayToString(NativePtr array);

    public static native Object qxArrayToStringArray(NativePtr array, boolean real);

    public static native String qxGetStringData(NativePtr array, boolean real);

    public static native Object qxArray2ObjectArray(NativePtr array, boolean real);

    // Handles.

    /** Frees each nonzero word of the block; a word is 8 bytes in native byte order. */
    public static native void qxDestroyArray(byte[] block);

    public static native void qxDestroyArray(NativePtr array);

    public static native NativePtr qxCreateEmptyArray(int classId);

    public static native NativePtr qxCreateSharedCopy(NativePtr array);

    public static native NativePtr qxDuplicateArray(NativePtr array);

    // Elements.

    public static native double qxGetDoubleAt(NativePtr array, int index, boolean real);

    public static native double qxGetDoubleAt(NativePtr array, int[] subscripts, boolean real);

    public static native float qxGetFloatAt(NativePtr array, int index, boolean real);

    public static native float qxGetFloatAt(NativePtr array, int[] subscripts, boolean real);

    public static native long qxGetLongAt(NativePtr array, int index, boolean real);

    public static native long qxGetLongAt(NativePtr array, int[] subscripts, boolean real);

    public static native int qxGetIntAt(NativePtr array, int index, boolean real);

    public static native int qxGetIntAt(NativePtr array, int[] subscripts, boolean real);

    public static native short qxGetShortAt(NativePtr array, int index, boolean real);

    public static native short qxGetShortAt(NativePtr array, int[] subscripts, boolean real);

    public static native byte qxGetByteAt(NativePtr array, int index, boolean real);

    public static native byte qxGetByteAt(NativePtr array, int[] subscripts, boolean real);

    public static native char qxGetCharAt(NativePtr array, int index);

    public static native char qxGetCharAt(NativePtr array, int[] subscripts);

    public static native boolean qxGetBooleanAt(NativePtr array, int index);

    public static native boolean qxGetBooleanAt(NativePtr array, int[] subscripts);

    public static native Object qxGetObjectAt(NativePtr array, int index, boolean real);

    public static native Object qxGetObjectAt(NativePtr array, int[] subscripts, boolean real);

    public static native void qxSetAt(NativePtr array, int index, Object value, boolean real);

    public static native void qxSetAt(NativePtr array, int[] subscripts, Object value, boolean real);

    public static native void qxSetAt(NativePtr array, int index, double value, boolean real);

    public static native void qxSetAt(NativePtr array, int[] subscripts, double value, boolean real);

    public static native void qxSetAt(NativePtr array, int index, float value, boolean real);

    public static native void qxSetAt(NativePtr array, int[] subscripts, float value, boolean real);

    public static native void qxSetAt(NativePtr array, int index, long value, boolean real);

    public static native void qxSetAt(NativePtr array, int[] subscripts, long value, boolean real);

    public static native void qxSetAt(NativePtr array, int index, int value, boolean real);

    public static native void qxSetAt(NativePtr array, int[] subscripts, int value, boolean real);

    public static native void qxSetAt(NativePtr array, int index, short value, boolean real);

    public static native void qxSetAt(NativePtr array, int[] subscripts, short value, boolean real);

    public static native void qxSetAt(NativePtr array, int index, byte value, boolean real);

    public static native void qxSetAt(NativePtr array, int[] subscripts, byte value, boolean real);

    public static native void qxSetAt(NativePtr array, int index, char value);

    public static native void qxSetAt(NativePtr array, int[] subscripts, char value);

    public static native void qxSetAt(NativePtr array, int index, boolean value);

    public static native void qxSetAt(NativePtr array, int[] subscripts, boolean value);

    public static native Object qxGetData(NativePtr array, boolean real);

    public static native void qxSetData(NativePtr array, Object data, boolean real);

    public static native Object qxGetCell(NativePtr array, int index);

    public static native void qxSetCell(NativePtr array, int index, Object value);

    // Subscripts.

    public static native int qxCalcSingleSubscript(NativePtr array, int[] subscripts);

    public static native int qxCalcStructSingleSubscript(NativePtr array, int[] fieldAndSubscripts);

    public static native int qxCalcStructSingleSubscript(NativePtr array, String field, int[] subscripts);

    public static native int qxCalcStructSingleSubscript(NativePtr array, String field, int index);

    public static native int[] qxGetIndexArray(NativePtr array, int dimension);

    // Queries and constants.

    public static native int qxGetClassID(NativePtr array);

    public static native int qxGetNumberOfDimensions(NativePtr array);

    public static native int qxGetNumberOfElements(NativePtr array);

    public static native int[] qxGetDimensions(NativePtr array);

    public static native boolean qxIsSparse(NativePtr array);

    public static native boolean qxIsComplex(NativePtr array);

    public static native boolean qxIsEmpty(NativePtr array);

    public static native int qxGetNumberOfNonZeros(NativePtr array);

    public static native int qxGetAllocatedNonZeros(NativePtr array);

    public static native int qxGetNumberOfFields(NativePtr array);

    public static native int qxGetFieldNumber(NativePtr array, String name);

    public static native String[] qxGetFieldNames(NativePtr array);

    public static native int qxGetElementSize(int classId);

    public static native int qxGetUnknownClassID();

    public static native int qxGetCellClassID();

    public static native int qxGetStructClassID();

    public static native int qxGetLogicalClassID();

    public static native int qxGetCharClassID();

    public static native int qxGetDoubleClassID();

    public static native int qxGetSingleClassID();

    public static native int qxGetInt8ClassID();

    public static native int qxGetUint8ClassID();

    public static native int qxGetInt16ClassID();

    public static native int qxGetUint16ClassID();

    public static native int qxGetInt32ClassID();

    public static native int qxGetUint32ClassID();

    public static native int qxGetInt64ClassID();

    public static native int qxGetUint64ClassID();

    public static native int qxGetFunctionClassID();

    public static native int qxGetOpaqueClassID();

    public static native int qxGetObjectClassID();

    public static native int qxGetRealID();

    public static native int qxGetComplexID();

    public static native double qxGetEps();

    public static native double qxGetInf();

    public static native double qxGetNaN();

    public static native boolean qxIsFinite(double value);

    public static native boolean qxIsInf(double value);

    public static native boolean qxIsNaN(double value);

    // Serialisation and comparison.

    public static native byte[] qxSerialize(NativePtr array);

    public static native NativePtr qxDeserialize(byte[] bytes);

    public static native int qxCompareArray(NativePtr left, NativePtr right);

    public static native boolean qxIsIdentical(NativePtr left, NativePtr right);

    public static native int qxGetHashValue(NativePtr array);
}
