package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.*;
import static org.junit.jupiter.api.Assumptions.assumeTrue;
import static org.junit.jupiter.params.provider.Arguments.arguments;

import com.norvane.toolbox.loomkit.testing.ChildProcess;
import java.io.*;
import java.util.*;
import java.util.function.DoubleFunction;
import java.util.function.Supplier;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;
import org.junit.jupiter.params.provider.ValueSource;

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

    /** NaNs of several bit patterns, what the processor gives for 0/0 among them. */
    private static double[] notNumbers() {
        double zero = Double.parseDouble("0");
        return new double[] {
            zero / zero, Double.longBitsToDouble(0xfff8000000000000L), Double.longBitsToDouble(~0L),
            Double.longBitsToDouble(0x7ff4000000000001L)
        };
    }

    static Stream<DoubleFunction<NVBuiltinArray>> holdingANumber() {
        double[][] ones = {{1}};
        return Stream.of(
                NVNumericArray::of,
                x -> NVNumericArray.complex(ones, new double[][] {{x}}),
                x -> NVNumericArray.complex(new double[][] {{x}}, ones),
                x -> NVNumericArray.of(new float[] {1, (float) x}),
                x -> NVNumericArray.sparse(new double[][] {{0, x}}),
                x -> NVCellArray.row("text", x));
    }

    @ParameterizedTest
    @MethodSource("holdingANumber")
    void everyNaNEqualsEveryOther(DoubleFunction<NVBuiltinArray> making) {
        try (NVBuiltinArray first = making.apply(Double.NaN);
                NVBuiltinArray number = making.apply(1.0)) {
            for (double other : notNumbers()) {
                try (NVBuiltinArray second = making.apply(other)) {
                    String bits = Long.toHexString(Double.doubleToRawLongBits(other));
                    assertEquals(first, second, bits);
                    assertEquals(first.hashCode(), second.hashCode(), bits);
                    assertEquals(0, second.compareTo(first), bits);
                    assertArrayEquals(first.serialize(), second.serialize(), bits);
                    assertNotEquals(second, number, bits);
                }
            }
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

    /** A stream that names a class and holds nothing of it, nor of what the class extends. */
    private static byte[] withoutData(Class<?> type) throws IOException {
        ByteArrayOutputStream bytes = new ByteArrayOutputStream();
        DataOutputStream stream = new DataOutputStream(bytes);
        stream.writeShort(ObjectStreamConstants.STREAM_MAGIC);
        stream.writeShort(ObjectStreamConstants.STREAM_VERSION);
        stream.writeByte(ObjectStreamConstants.TC_OBJECT);
        stream.writeByte(ObjectStreamConstants.TC_CLASSDESC);
        stream.writeUTF(type.getName());
        stream.writeLong(ObjectStreamClass.lookup(type).getSerialVersionUID());
        stream.writeByte(ObjectStreamConstants.SC_SERIALIZABLE);
        stream.writeShort(0);
        stream.writeByte(ObjectStreamConstants.TC_ENDBLOCKDATA);
        stream.writeByte(ObjectStreamConstants.TC_NULL);
        return bytes.toByteArray();
    }

    @ParameterizedTest
    @ValueSource(
            classes = {
                NVBuiltinArray.class, NVNumericArray.class, NVCharArray.class, NVLogicalArray.class,
                NVCellArray.class, NVStructArray.class, NVFunctionHandle.class, SerializedArray.class,
                NVException.class, ExtendedException.class
            })
    void refusesAStreamWithoutData(Class<?> type) throws IOException {
        byte[] forged = withoutData(type);
        assertThrows(InvalidObjectException.class, () -> read(forged));
    }

    private static final class ExtendedException extends NVException {
        private static final long serialVersionUID = 1L;
    }

    @Test
    void failuresTravelWithTheirStackAndIdentifier() throws Exception {
        NVException failure = new NVException("it broke", new String[] {"at f (f.cpp:1)", "identifier a:b"}, 2);
        NVException arrived = (NVException) read(written(failure));
        assertEquals(failure.getNativeStack(), arrived.getNativeStack());
        assertEquals("a:b", arrived.getIdentifier());
    }

    private static NVBuiltinArray gathered(Object inside) throws IOException {
        try (Component showcase = TestComponents.open("showcase");
                NVCellArray inner = showcase.call1("gather", inside).asCell()) {
            return showcase.call1("gather", 1.0, inner).asCell();
        }
    }

    static Stream<Arguments> withoutForm() throws IOException {
        NVNumericArray tooLarge = NVNumericArray.zeros(1 << 28, 1); // Its memory is never touched.
        return Stream.of(
                arguments(tooLarge, "is too large to be serialised: its form takes 2147483666 bytes"),
                arguments(gathered(JavaDataTest.nestedCells(99)), "it is nested more than 100 levels deep"),
                arguments(gathered(new Object()), "array of class CELL can't be serialised: it holds a Java object"));
    }

    @ParameterizedTest
    @MethodSource
    void withoutForm(NVBuiltinArray array, String reason) {
        try (array;
                NVBuiltinArray shared = array.sharedCopy();
                NVNumericArray small = NVNumericArray.zeros(1, 1)) {
            String message = assertThrows(UnsupportedOperationException.class, array::serialize).getMessage();
            assertTrue(message.contains(reason), message);
            assertEquals(array, array);
            assertNotEquals(array, shared);
            assertEquals(0, array.hashCode());
            assertEquals(0, array.compareTo(array));
            assertEquals(-1, array.compareTo(small));
            assertEquals(1, small.compareTo(array));
        }
    }

    /** Takes native memory up to what the virtual machine needs for itself, and then asks for more than that. */
    public static final class ProgramWithoutMemory {
        private static final int SIZE = 8 << 20;
        private static final List<NVNumericArray> FILLING = new ArrayList<>();

        private static void fill() {
            try {
                while (true) {
                    FILLING.add(NVNumericArray.zeros(1, SIZE / 4));
                }
            } catch (OutOfMemoryError full) {
                FILLING.remove(0).close();
                FILLING.remove(0).close();
            }
        }

        public static void main(String[] args) {
            NVNumericArray array = NVNumericArray.zeros(1, SIZE);
            NVNumericArray other = array.duplicate();
            other.setAt(SIZE - 1, 1.0);
            byte[] form = array.serialize();
            Map<String, Runnable> uses = new LinkedHashMap<>();
            uses.put("serialize", array::serialize);
            uses.put("hashCode", array::hashCode);
            uses.put("equals", () -> array.equals(other));
            uses.put("compareTo", () -> array.compareTo(other));
            uses.put("compareTo a small one", () -> array.compareTo(FILLING.get(FILLING.size() - 1)));
            uses.put("compareTo, in reverse", () -> FILLING.get(FILLING.size() - 1).compareTo(array));
            uses.put("deserialize", () -> NVBuiltinArray.deserialize(form).close());
            fill();
            uses.forEach((what, use) -> System.out.println(what + ": " + outcomeOf(use)));
            FILLING.forEach(NVNumericArray::close);
            uses.keySet().removeIf(what -> what.contains(" "));
            uses.forEach((what, use) -> System.out.println(what + ": " + outcomeOf(use)));
        }

        private static String outcomeOf(Runnable use) {
            try {
                use.run();
                return "done";
            } catch (RuntimeException | Error failure) {
                return failure.getClass().getSimpleName();
            }
        }
    }

    /** A sanitizer needs more room for itself than the limit leaves. */
    @Test
    void saysThatMemoryIsMissing() throws Exception {
        assumeTrue(System.getenv("LD_PRELOAD") == null);
        ChildProcess child = ChildProcess.runWithin(3 << 20, ProgramWithoutMemory.class, List.of("-Xmx500m",
                "-XX:+UseSerialGC", "-XX:CompressedClassSpaceSize=32m", "-XX:ReservedCodeCacheSize=32m"));
        assertEquals(
                List.of(
                        "serialize: OutOfMemoryError", "hashCode: OutOfMemoryError", "equals: OutOfMemoryError",
                        "compareTo: OutOfMemoryError", "compareTo a small one: OutOfMemoryError",
                        "compareTo, in reverse: OutOfMemoryError", "deserialize: OutOfMemoryError",
                        "serialize: done", "hashCode: done", "equals: done", "compareTo: done", "deserialize: done"),
                child.output.lines().collect(Collectors.toList()),
                "exit code " + child.exitCode);
    }

    /** 14 bytes can stand for 2^31-1 rows without elements. */
    @Test
    void refusesToShowMoreRowsThanThereIsMemoryFor() {
        byte[] form = {(byte) 0x82, 1, (byte) 0x83, 6, (byte) 0x82, 0x1A, 0x7F, -1, -1, -1, 0, (byte) 0xD8, 86, 0x40};
        try (NVBuiltinArray array = NVBuiltinArray.deserialize(form)) {
            NVNumericArray rows = array.asNumeric();
            for (Executable read : List.<Executable>of(rows::toObject, rows::toDoubleArray)) {
                String message = assertThrows(UnsupportedOperationException.class, read).getMessage();
                assertTrue(message.contains("[2147483647, 0]"), message);
            }
            assertArrayEquals(form, array.serialize());
        }
    }
}
