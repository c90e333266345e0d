package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.*;

import com.norvane.toolbox.loomkit.testing.Together;
import java.io.*;
import java.math.BigInteger;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.security.MessageDigest;
import java.util.*;
import java.util.concurrent.Callable;
import java.util.function.DoubleUnaryOperator;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class ComponentLifeTest {
    private static final int CHUNK = 4096;

    @TempDir Path folder;
    private byte[] archive;

    @BeforeEach
    void readArchive() throws IOException {
        TestComponents.start();
        archive = Files.readAllBytes(TestComponents.archive("showcase"));
    }

    private static void assertWorks(Component component) {
        assertEquals(4, component.call1("parabola", 2 + Math.sqrt(3)).asNumeric().doubleValue(), 1e-12);
    }

    /** The archive with an extra field in its directory that brings it to a size beyond a multiple of the chunk. */
    private byte[] padded(int beyond) {
        int size = (archive.length / CHUNK + 2) * CHUNK + beyond;
        int field = size - archive.length;
        int end = archive.length - 22;
        int lastEntry = new String(archive, StandardCharsets.ISO_8859_1).lastIndexOf("PK\1\2");
        ByteBuffer padded = ByteBuffer.allocate(size).order(ByteOrder.LITTLE_ENDIAN);
        padded.put(archive, 0, end).put((byte) 'u').put((byte) 'x').putShort((short) (field - 4));
        padded.position(end + field);
        padded.put(archive, end, 22);
        padded.putShort(lastEntry + 30, (short) field);
        padded.putInt(end + field + 12, padded.getInt(end + field + 12) + field);
        return padded.array();
    }

    @ParameterizedTest
    @ValueSource(ints = {-1, 0, 1})
    void opensStreamsOfAnyPaceAroundAMultipleOfTheChunk(int beyond) throws IOException {
        byte[] bytes = padded(beyond);
        InputStream stream = new ByteArrayInputStream(Arrays.copyOf(bytes, bytes.length + 10));
        InputStream trickle = reading(
                bytes, (source, number, target) -> number % 1000 == 999 ? 0 : source.read(target, 0, 1));
        try (Component component = Component.open(stream, bytes.length);
                Component toItsEnd = Component.open(new ByteArrayInputStream(bytes));
                Component trickled = Component.open(trickle, bytes.length)) {
            assertWorks(component);
            assertWorks(toItsEnd);
            assertWorks(trickled);
            assertEquals(10 - Math.min(10, Math.floorMod(-beyond, CHUNK)), stream.available(), "read whole chunks");
        }
    }

    @Test
    void opensTheArchiveOfAnExpectedDigestAndNoOther() throws Exception {
        Path file = TestComponents.archive("showcase");
        byte[] digest = MessageDigest.getInstance("SHA-256").digest(archive);
        String hex = String.format("%064X", new BigInteger(1, digest));
        Path target = folder.resolve(" white space at both ends \t");
        ComponentOptions other = new ComponentOptions().expectSha256("0".repeat(64)).extractTo(target);
        NVException failure = assertThrows(NVException.class, () -> Component.open(file, other));
        assertTrue(failure.getMessage().contains("not " + "0".repeat(64)), failure.getMessage());
        assertFalse(Files.exists(target));
        ComponentOptions right = new ComponentOptions().expectSha256(hex).extractTo(target);
        try (Component component = Component.open(file, right)) {
            assertWorks(component);
            assertTrue(Files.isRegularFile(target.resolve("component.json")), target.toString());
        }
        assertThrows(IllegalArgumentException.class, () -> new ComponentOptions().expectSha256("12"));
    }

    @Test
    void opensRegularFilesOnly() {
        for (Path path : List.of(folder, Path.of("/dev/zero"))) {
            IOException failure = assertThrows(IOException.class, () -> Component.open(path));
            assertTrue(failure.getMessage().contains("is not a file"), failure.getMessage());
        }
    }

    /** Reads of a stream, numbered from 0, each with the array to be filled. */
    private interface Reading {
        int read(InputStream source, int number, byte[] target) throws IOException;
    }

    private InputStream reading(byte[] bytes, Reading reading) {
        return new FilterInputStream(new ByteArrayInputStream(bytes)) {
            private int number;

            @Override
            public int read(byte[] target) throws IOException {
                return reading.read(in, number++, target);
            }
        };
    }

    @Test
    void letsAFailureOfTheStreamThroughAsItIs() {
        IOException failure = new IOException("unplugged");
        InputStream failing = reading(archive, (source, number, target) -> {
            if (number == 3) {
                throw failure;
            }
            return source.read(target);
        });
        assertSame(failure, assertThrows(IOException.class, () -> Component.open(failing, archive.length)));
    }

    @Test
    void tellsWhereAStreamEndedThatWasTooShort() {
        InputStream cut = new ByteArrayInputStream(archive, 0, 5000);
        NVException failure = assertThrows(NVException.class, () -> Component.open(cut, archive.length));
        assertEquals("the archive ends after 5000 of " + archive.length + " bytes", failure.getMessage());
    }

    @ParameterizedTest
    @ValueSource(ints = {-2, CHUNK + 1, Integer.MAX_VALUE})
    void refusesAStreamThatMiscounts(int claim) {
        InputStream lying = reading(archive, (source, number, target) -> claim);
        assertThrows(IOException.class, () -> Component.open(lying, archive.length));
    }

    @Test
    void finishesACallDuringWhichItIsClosed() throws IOException {
        Component component = TestComponents.open("showcase");
        NVArray result = component.call1("same", "kept");
        DoubleUnaryOperator closing = x -> {
            component.close();
            return x * x;
        };
        double minimum = component.call("minimize", 1, closing, -1.0, 2.0)[0].asNumeric().doubleValue();

        component.close();
        assertEquals(0, minimum, 1e-6);
        assertTrue(component.isClosed());
        assertThrows(IllegalStateException.class, () -> component.call1("same", 1.0));
        assertThrows(IllegalStateException.class, component::functions);
        assertEquals("showcase " + component.version() + " (closed)", component.toString());
        assertEquals("kept", result.asChar().toJavaString());
    }

    @Test
    void startsAndStopsAgain() throws IOException {
        Component stale = TestComponents.open("showcase");
        NVNumericArray array = NVNumericArray.of(2.5);
        Loomkit.stop();
        Loomkit.stop();
        assertFalse(Loomkit.isRunning());
        assertTrue(stale.isClosed());
        assertThrows(IllegalStateException.class, () -> stale.call1("same", 1.0));
        stale.close();
        assertEquals(2.5, array.doubleValue());

        TestComponents.start();
        assertTrue(Loomkit.isRunning());
        try (Component fresh = TestComponents.open("showcase")) {
            assertWorks(fresh);
        }
    }

    @Test
    void isStoppedByTheNextStopWhenOneCameBetween() throws IOException {
        byte[] archive = Files.readAllBytes(TestComponents.archive("showcase"));
        TestComponents.start();
        InputStream stopping = new ByteArrayInputStream(archive) {
            @Override
            public synchronized int read(byte[] bytes, int offset, int length) {
                Loomkit.stop();
                return super.read(bytes, offset, length);
            }
        };
        try (Component component = Component.open(stopping, archive.length)) {
            assertWorks(component);
            assertTrue(Loomkit.isRunning());
            Loomkit.stop();
            assertTrue(component.isClosed());
        }
    }

    @Test
    void startsOnceAndEvaluatesForManyThreads() throws Exception {
        Loomkit.stop();
        Callable<Component> opening = () -> TestComponents.open("showcase");
        List<Component> opened = Together.run(Collections.nCopies(8, opening));
        Callable<Void> calling = () -> {
            double number = Thread.currentThread().getId();
            for (int round = 0; round < 50; round++) {
                NVArray result = opened.get(round % 2).call1("increment", number);
                assertEquals(number + 1, result.asNumeric().doubleValue());
                NVException failure =
                        assertThrows(NVException.class, () -> opened.get(0).call1("fail_deep", "own " + number));
                assertTrue(failure.getMessage().contains("own " + number) && failure.getNativeStack().size() == 3);
            }
            return null;
        };
        Together.run(Collections.nCopies(8, calling));
        opened.forEach(Component::close);
    }

    /** A call runs to its end or does not begin, whether the component is closed or the runtime stops. */
    @ParameterizedTest
    @ValueSource(booleans = {false, true})
    void endsDuringCallsOfOtherThreads(boolean stopping) throws Exception {
        for (int round = 0; round < 40; round++) {
            Component component = TestComponents.open("showcase");
            Callable<Void> calling = () -> {
                Exception refused = assertThrows(IllegalStateException.class, () -> callWithoutEnd(component));
                assertEquals("the component is closed", refused.getMessage());
                return null;
            };
            List<Callable<Void>> tasks = new ArrayList<>(Collections.nCopies(4, calling));
            tasks.add(() -> {
                if (stopping) {
                    Loomkit.stop();
                }
                component.close();
                return null;
            });
            Together.run(tasks);
        }
    }

    private static void callWithoutEnd(Component component) {
        while (true) {
            component.call1("increment", 1.0).close();
        }
    }
}
