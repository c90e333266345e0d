package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.ByteArrayInputStream;
import java.io.FilterInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.math.BigInteger;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.security.MessageDigest;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collections;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
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
        try (Component component = Component.open(stream, bytes.length);
                Component toItsEnd = Component.open(new ByteArrayInputStream(bytes));
                Component trickled = Component.open(new Trickle(new ByteArrayInputStream(bytes)), bytes.length)) {
            assertWorks(component);
            assertWorks(toItsEnd);
            assertWorks(trickled);
        }
    }

    @Test
    void opensTheArchiveOfAnExpectedDigestAndNoOther() throws Exception {
        Path file = TestComponents.archive("showcase");
        byte[] digest = MessageDigest.getInstance("SHA-256").digest(archive);
        String hex = String.format("%064X", new BigInteger(1, digest));
        try (Component component = Component.open(file, new ComponentOptions().expectSha256(hex))) {
            assertWorks(component);
        }
        Path target = folder.resolve("unpacked");
        ComponentOptions other = new ComponentOptions().expectSha256("0".repeat(64)).extractTo(target);
        NVException failure = assertThrows(NVException.class, () -> Component.open(file, other));
        assertTrue(failure.getMessage().contains("not " + "0".repeat(64)), failure.getMessage());
        assertFalse(Files.exists(target));
        assertThrows(IllegalArgumentException.class, () -> new ComponentOptions().expectSha256("12"));
    }

    @Test
    void opensRegularFilesOnly() {
        for (Path path : List.of(folder, Path.of("/dev/zero"))) {
            IOException failure = assertThrows(IOException.class, () -> Component.open(path));
            assertTrue(failure.getMessage().contains("is not a file"), failure.getMessage());
        }
    }

    /** Gives one byte a read, and now and then none. */
    private static final class Trickle extends FilterInputStream {
        private int reads;

        Trickle(InputStream source) {
            super(source);
        }

        @Override
        public int read(byte[] target) throws IOException {
            reads++;
            return reads % 1000 == 0 ? 0 : super.read(target, 0, 1);
        }
    }

    @Test
    void letsAFailureOfTheStreamThroughAsItIs() {
        IOException failure = new IOException("unplugged");
        InputStream failing =
                new FilterInputStream(new ByteArrayInputStream(archive)) {
                    private int left = 3;

                    @Override
                    public int read(byte[] target) throws IOException {
                        if (left-- == 0) {
                            throw failure;
                        }
                        return super.read(target);
                    }
                };
        assertSame(failure, assertThrows(IOException.class, () -> Component.open(failing, archive.length)));
    }

    @ParameterizedTest
    @ValueSource(ints = {-2, CHUNK + 1, Integer.MAX_VALUE})
    void refusesAStreamThatMiscounts(int claim) {
        InputStream lying =
                new ByteArrayInputStream(archive) {
                    @Override
                    public int read(byte[] target) {
                        return claim;
                    }
                };
        assertThrows(IOException.class, () -> Component.open(lying, archive.length));
    }

    @ParameterizedTest
    @ValueSource(strings = {"unpacked", " white space at both ends \t"})
    void unpacksToAFolder(String name) throws IOException {
        Path target = folder.resolve(name);
        try (Component component =
                Component.open(TestComponents.archive("showcase"), new ComponentOptions().extractTo(target))) {
            assertWorks(component);
            assertTrue(Files.isRegularFile(target.resolve("component.json")), target.toString());
        }
    }

    @Test
    void finishesACallDuringWhichItIsClosed() throws IOException {
        Component component = TestComponents.open("showcase");
        NVArray result = component.call1("same", "kept");
        DoubleUnaryOperator closing =
                x -> {
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
    void startsOnceAndEvaluatesForManyThreads() throws Exception {
        Loomkit.stop();
        int count = 8;
        ExecutorService threads = Executors.newFixedThreadPool(count);
        CountDownLatch start = new CountDownLatch(count);
        Callable<Component> opening =
                () -> {
                    start.countDown();
                    start.await();
                    return TestComponents.open("showcase");
                };
        List<Component> opened = new ArrayList<>();
        for (Future<Component> component : threads.invokeAll(Collections.nCopies(count, opening))) {
            opened.add(component.get());
        }
        Callable<Void> calling =
                () -> {
                    double number = Thread.currentThread().getId();
                    for (int round = 0; round < 50; round++) {
                        NVArray result = opened.get(round % 2).call1("increment", number);
                        assertEquals(number + 1, result.asNumeric().doubleValue());
                    }
                    return null;
                };
        for (Future<Void> caller : threads.invokeAll(Collections.nCopies(count, calling))) {
            caller.get();
        }
        opened.forEach(Component::close);
        threads.shutdown();
    }

    /** A call runs to its end or does not begin, whether the component is closed or the runtime stops. */
    @ParameterizedTest
    @ValueSource(booleans = {false, true})
    void endsDuringCallsOfOtherThreads(boolean stopping) throws Exception {
        ExecutorService threads = Executors.newFixedThreadPool(4);
        for (int round = 0; round < 40; round++) {
            Component component = TestComponents.open("showcase");
            CountDownLatch start = new CountDownLatch(4);
            Callable<Void> calling =
                    () -> {
                        start.countDown();
                        IllegalStateException refused =
                                assertThrows(IllegalStateException.class, () -> callWithoutEnd(component));
                        assertEquals("the component is closed", refused.getMessage());
                        return null;
                    };
            List<Future<Void>> callers = new ArrayList<>();
            for (int i = 0; i < 4; i++) {
                callers.add(threads.submit(calling));
            }
            start.await();
            if (stopping) {
                Loomkit.stop();
            }
            component.close();
            for (Future<Void> caller : callers) {
                caller.get();
            }
        }
        threads.shutdown();
    }

    private static void callWithoutEnd(Component component) {
        while (true) {
            component.call1("increment", 1.0).close();
        }
    }
}
