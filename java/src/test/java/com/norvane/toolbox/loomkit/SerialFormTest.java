package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;

import java.io.ByteArrayInputStream;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.InvalidObjectException;
import java.io.ObjectInputStream;
import java.io.ObjectOutputStream;
import java.nio.ByteBuffer;
import java.util.Arrays;
import java.util.Map;
import java.util.function.Supplier;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;

class SerialFormTest {
    static Stream<Supplier<NVBuiltinArray>> arrays() {
        return Stream.of(
                () -> NVNumericArray.of(new double[][] {{1, Double.NaN}, {-0.0, Double.NEGATIVE_INFINITY}}),
                () -> NVNumericArray.complex(new double[][] {{1, 2}}, new double[][] {{3, 4}}),
                () -> NVNumericArray.of(new byte[][][] {{{1, 2}}, {{3, 4}}}),
                () -> NVNumericArray.zeros(ClassId.UINT64, Complexity.COMPLEX, 0, 3),
                () -> NVNumericArray.sparse(new double[][] {{0, 5}, {0, 0}}),
                () -> NVLogicalArray.sparse(new boolean[][] {{true, false}}),
                () -> NVLogicalArray.of(true),
                () -> NVCharArray.of("text \ud83d\ude00 \ud800", "x"),
                () -> NVCellArray.row(1, "b", NVCellArray.empty(2, 0)),
                () -> NVStructArray.of(Map.of("field", new float[] {1, 2})));
    }

    private static byte[] written(Object object) throws IOException {
        ByteArrayOutputStream bytes = new ByteArrayOutputStream();
        try (ObjectOutputStream stream = new ObjectOutputStream(bytes)) {
            stream.writeObject(object);
        }
        return bytes.toByteArray();
    }

    private static Object read(byte[] bytes) throws IOException, ClassNotFoundException {
        try (ObjectInputStream stream = new ObjectInputStream(new ByteArrayInputStream(bytes))) {
            return stream.readObject();
        }
    }

    @ParameterizedTest
    @MethodSource("arrays")
    void travelsByValue(Supplier<NVBuiltinArray> making) throws Exception {
        try (NVBuiltinArray array = making.get();
                NVBuiltinArray twin = making.get();
                NVBuiltinArray arrived = (NVBuiltinArray) read(written(array))) {
            assertSame(array.getClass(), arrived.getClass());
            assertEquals(array, arrived);
            assertEquals(array, twin);
            assertEquals(array.hashCode(), arrived.hashCode());
            assertEquals(0, array.compareTo(arrived));
            assertNotEquals(array, "no array");
            assertEquals(array.toString(), arrived.toString());
        }
    }

    @Test
    void refusesForeignBytes() throws Exception {
        byte[] foreign = {1, 2, 3};
        IllegalArgumentException refused =
                assertThrows(IllegalArgumentException.class, () -> NVBuiltinArray.deserialize(foreign));
        assertEquals("the bytes are not the serialised form of an array", refused.getMessage());
        assertThrows(InvalidObjectException.class, () -> read(written(new SerializedArray(foreign))));
        assertThrows(InvalidObjectException.class, () -> read(written(new SerializedArray(null))));
    }

    /** Its memory is never touched. */
    @Test
    void anArrayTooLargeForAFormEqualsItself() {
        try (NVNumericArray large = NVNumericArray.zeros(1 << 28, 1);
                NVNumericArray small = NVNumericArray.zeros(1, 1)) {
            assertThrows(UnsupportedOperationException.class, large::serialize);
            assertEquals(large, large);
            assertEquals(0, large.compareTo(large));
            assertEquals(-1, large.compareTo(small));
            assertEquals(1, small.compareTo(large));
        }
    }

    /** A scalar with any number of extents is a good form, though no Java array is nested that deeply. */
    @Test
    void anArrayOfTooManyDimensionsHasNoJavaType() {
        ByteBuffer form = ByteBuffer.allocate(70_020);
        form.put(new byte[] {(byte) 0x82, 1, (byte) 0x83, 6, (byte) 0x9A}).putInt(70_000);
        for (int i = 0; i < 70_000; i++) {
            form.put((byte) 1);
        }
        form.put(new byte[] {(byte) 0xD8, 86, 0x48}).putLong(0);
        byte[] bytes = Arrays.copyOf(form.array(), form.position());
        try (NVBuiltinArray array = NVBuiltinArray.deserialize(bytes)) {
            assertEquals(70_000, array.numberOfDimensions());
            assertThrows(UnsupportedOperationException.class, array::toObject);
            assertArrayEquals(bytes, array.serialize());
        }
    }
}
