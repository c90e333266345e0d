package com.norvane.toolbox.loomkit.internal;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.api.Named.named;

import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Named;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.MethodSource;

class NativeBundleTest {
    private static final byte[] ONE = {1, 2, 3};
    private static final byte[] TWO = new byte[10_000];

    @TempDir Path cache;
    private final Map<String, byte[]> files = new HashMap<>();

    @BeforeEach
    void fillBundle() {
        files.put("libone.so", ONE);
        files.put("libtwo.so", TWO);
        String list =
                NativeBundle.digestOf(ONE) + "  libone.so\n" + NativeBundle.digestOf(TWO) + "  libtwo.so\n";
        files.put("natives.sha256", list.getBytes(StandardCharsets.UTF_8));
    }

    private NativeBundle bundle() {
        return new NativeBundle(
                name -> files.containsKey(name) ? new ByteArrayInputStream(files.get(name)) : null, cache);
    }

    private List<String> leftInCache() throws IOException {
        try (Stream<Path> entries = Files.list(cache)) {
            return entries.map(entry -> entry.getFileName().toString()).collect(Collectors.toList());
        }
    }

    @Test
    void unpacksIntoAPrivateFolderNamedByItsDigest() throws IOException {
        Path folder = bundle().unpack();

        assertArrayEquals(ONE, Files.readAllBytes(folder.resolve("libone.so")));
        assertArrayEquals(TWO, Files.readAllBytes(folder.resolve("libtwo.so")));
        assertEquals("rwx------", PosixFilePermissions.toString(Files.getPosixFilePermissions(folder)));
        assertEquals(List.of(NativeBundle.digestOf(files.get("natives.sha256"))), leftInCache());
        Object key = Files.getAttribute(folder, "unix:ino");
        assertEquals(key, Files.getAttribute(bundle().unpack(), "unix:ino"), "a whole folder is used again");
    }

    private interface Damage {
        void to(Path folder) throws IOException;
    }

    static Stream<Named<Damage>> damages() {
        return Stream.of(
                named("changed", folder -> Files.write(folder.resolve("libone.so"), new byte[] {9})),
                named("missing", folder -> Files.delete(folder.resolve("libtwo.so"))),
                named("open to others", folder ->
                        Files.setPosixFilePermissions(folder, PosixFilePermissions.fromString("rwxrwxrwx"))),
                named("linked", folder -> {
                    Files.delete(folder.resolve("libone.so"));
                    Files.createSymbolicLink(folder.resolve("libone.so"), folder.resolve("libtwo.so"));
                }));
    }

    @ParameterizedTest
    @MethodSource("damages")
    void replacesAFolderThatIsNotWhole(Damage damage) throws IOException {
        damage.to(bundle().unpack());

        unpacksIntoAPrivateFolderNamedByItsDigest();
    }

    @ParameterizedTest
    @CsvSource({
        "libone.so, tampered, libone.so does not have the digest",
        "natives.sha256, abc ../evil.so, bad line",
        "natives.sha256, abc, bad line",
        "libtwo.so, , no libtwo.so for this platform",
    })
    void refusesABadBundleAndLeavesNothing(String file, String content, String message) throws IOException {
        files.remove(file);
        if (content != null) {
            files.put(file, content.getBytes(StandardCharsets.UTF_8));
        }

        IOException failure = assertThrows(IOException.class, bundle()::unpack);

        assertTrue(failure.getMessage().contains(message), failure.getMessage());
        assertEquals(List.of(), leftInCache());
    }

    @Test
    void isUnpackedOnceByManyAtATime() throws Exception {
        ExecutorService threads = Executors.newFixedThreadPool(8);
        List<Callable<Path>> unpacking = new ArrayList<>();
        for (int i = 0; i < 32; i++) {
            unpacking.add(() -> bundle().unpack());
        }
        for (Future<Path> folder : threads.invokeAll(unpacking)) {
            assertArrayEquals(TWO, Files.readAllBytes(folder.get().resolve("libtwo.so")));
        }
        threads.shutdown();
        assertEquals(1, leftInCache().size());
    }
}
