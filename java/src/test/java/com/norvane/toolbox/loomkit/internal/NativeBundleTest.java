package com.norvane.toolbox.loomkit.internal;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.api.Assumptions.assumeTrue;
import static org.junit.jupiter.api.Named.named;

import com.norvane.toolbox.loomkit.testing.ChildProcess;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.Set;
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

    @TempDir Path folder;
    private Path cache;
    private final Map<String, byte[]> files = bundleFiles();

    @BeforeEach
    void makeCache() throws IOException {
        cache = Files.createDirectory(folder.resolve("cache"));
    }

    private static Map<String, byte[]> bundleFiles() {
        Map<String, byte[]> files = new HashMap<>();
        files.put("libone.so", ONE);
        files.put("libtwo.so", TWO);
        String list =
                Sha256.hexOf(ONE) + "  libone.so\n" + Sha256.hexOf(TWO) + "  libtwo.so\n";
        files.put("natives.sha256", list.getBytes(StandardCharsets.UTF_8));
        return files;
    }

    private static NativeBundle bundle(Map<String, byte[]> files, Path cache) {
        return new NativeBundle(
                name -> files.containsKey(name) ? new ByteArrayInputStream(files.get(name)) : null, cache);
    }

    private NativeBundle bundle() {
        return bundle(files, cache);
    }

    /** Unpacks the bundle to {@code -Dcache} and for the process, once or, with {@code -Dendless}, over and over. */
    public static final class Unpacker {
        public static void main(String[] args) throws IOException {
            NativeBundle bundle = bundle(bundleFiles(), Path.of(System.getProperty("cache")));
            System.out.println("started");
            do {
                try {
                    Path unpacked = bundle.unpack();
                    bundle.unpackForThisProcess().close();
                    if (Boolean.getBoolean("endless")) {
                        Files.write(unpacked.resolve("libone.so"), new byte[] {9});
                    }
                } catch (IOException failure) {
                    System.out.println(failure.getMessage());
                }
            } while (Boolean.getBoolean("endless"));
        }
    }

    private ProcessBuilder unpacker(String... options) {
        List<String> all = new ArrayList<>(List.of("-XX:+UseSerialGC", "-XX:TieredStopAtLevel=1", "-XX:-UsePerfData",
                "-Dcache=" + cache, "-Djava.io.tmpdir=" + folder));
        all.addAll(List.of(options));
        return ChildProcess.builder(Unpacker.class, all);
    }

    private List<String> leftInCache() throws IOException {
        return namesIn(cache);
    }

    private static List<String> namesIn(Path folder) throws IOException {
        try (Stream<Path> entries = Files.list(folder)) {
            return entries.map(entry -> entry.getFileName().toString()).collect(Collectors.toList());
        }
    }

    @Test
    void unpacksIntoAPrivateFolderNamedByItsDigest() throws IOException {
        Path folder = bundle().unpack();

        assertArrayEquals(ONE, Files.readAllBytes(folder.resolve("libone.so")));
        assertArrayEquals(TWO, Files.readAllBytes(folder.resolve("libtwo.so")));
        assertEquals("rwx------", PosixFilePermissions.toString(Files.getPosixFilePermissions(folder)));
        assertEquals(List.of(Sha256.hexOf(files.get("natives.sha256"))), leftInCache());
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
                named("a file open to others", folder -> Files.setPosixFilePermissions(
                        folder.resolve("libone.so"), PosixFilePermissions.fromString("rw-rw-rw-"))),
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

    @Test
    void isClosedToOthersWhateverTheUmask() throws Exception {
        cache = folder.resolve("a/b");
        ChildProcess child = ChildProcess.run(ChildProcess.after("umask 000", unpacker()));

        assertEquals("started\n", child.output);
        Path natives = bundle().unpack();
        for (Path made : List.of(folder.resolve("a"), cache, natives)) {
            assertEquals("rwx------", PosixFilePermissions.toString(Files.getPosixFilePermissions(made)), "" + made);
        }
        assertEquals("rw-------",
                PosixFilePermissions.toString(Files.getPosixFilePermissions(natives.resolve("libone.so"))));
        assertEquals(Set.of("a", "cache"), Set.copyOf(namesIn(folder)), "the folder of the process went with it");
    }

    @Test
    void saysWhatCouldNotBeWritten() throws Exception {
        // Files of more than 4 KiB can't be written.
        ChildProcess child = ChildProcess.run(ChildProcess.after("ulimit -f 8", unpacker()));

        assertTrue(child.output.matches("started\ncan't write " + cache + "/.*/libtwo.so: File too large\n"),
                child.output);
        assertEquals(List.of(), leftInCache());
    }

    /** A hundred kills, or fewer, down to 20, where they take more than some seconds. */
    @Test
    void isSweptAfterKilledProcesses() throws Exception {
        long start = System.nanoTime();
        for (int kills = 0; kills < 100 && (kills < 20 || System.nanoTime() - start < 8_000_000_000L); kills += 4) {
            List<Process> children = new ArrayList<>();
            for (int i = 0; i < 4; i++) {
                children.add(unpacker("-Dendless=true").redirectErrorStream(true).start());
            }
            for (Process child : children) {
                assertEquals('s', child.getInputStream().read());
                // A while that grows from kill to kill, up to some ms.
                for (long end = System.nanoTime() + kills * 100_000L; System.nanoTime() < end; ) {
                    Thread.onSpinWait();
                }
                child.destroyForcibly();
                assertEquals(128 + 9, child.waitFor());
            }
        }
        for (int run = 0; run < 2; run++) {
            assertEquals("started\n", ChildProcess.run(unpacker()).output);
        }

        assertEquals(List.of(bundle().unpack().getFileName().toString()), leftInCache());
        assertEquals(List.of("cache"), namesIn(folder));
    }

    @Test
    void keepsWhatOnlyLooksLeftBehind() throws Exception {
        Path mine = Files.createDirectories(folder.resolve("loomkit-natives-1-1-1"));
        Files.write(mine.resolve("mine"), ONE);
        Files.createDirectory(folder.resolve("loomkit-natives-1-1-2"));
        Files.createDirectory(folder.resolve("loomkit-natives-other"));

        ChildProcess.run(unpacker());

        assertEquals(Set.of("cache", "loomkit-natives-1-1-1", "loomkit-natives-other"), Set.copyOf(namesIn(folder)));
    }

    @ParameterizedTest
    @CsvSource({
        "team, unix:gid, 54321, rwxrwxr-x, can be written by others of its group 54321; 'chmod g-w' mends that",
        "open, unix:gid, 0, rwxr-xrwx, can be written by everybody; 'chmod o-w' mends that",
        "strange, unix:uid, 54321, rwxr-xr-x, 'belongs to the user 54321, while this process runs as the user 0'",
        "link, unix:uid, 54321, , 'is a link that belongs to the user 54321'",
        "fine, unix:gid, 0, rwxrwxr-x, ",
    })
    void refusesAFolderThatOthersCanWriteTo(String name, String attribute, int value, String mode, String problem)
            throws IOException {
        assumeTrue(TrustedFolder.processUser() == 0, "only root can make files of other users");
        Path place = folder.resolve(name);
        if (mode == null) {
            Files.createSymbolicLink(place, Files.createDirectory(folder.resolve("target")));
        } else {
            Files.createDirectory(place);
        }
        Files.setAttribute(place, attribute, value, LinkOption.NOFOLLOW_LINKS);
        if (mode != null) {
            Files.setPosixFilePermissions(place, PosixFilePermissions.fromString(mode));
        }
        for (Path below : List.of(place, place.resolve("below"))) {
            cache = below;
            if (problem == null) {
                assertTrue(Files.isDirectory(bundle().unpack()));
            } else {
                String message = assertThrows(IOException.class, bundle()::unpack).getMessage();
                assertTrue(message.contains("from " + below + ", "), message);
                assertTrue(message.contains(place + " ") && message.contains(problem), message);
                assertEquals(List.of(), namesIn(place));
            }
        }
    }

    @ParameterizedTest
    @CsvSource({"/x, /home/a, /x/loomkit/natives", "x, /home/a, /home/a/.cache/loomkit/natives",
            ", /home/a, /home/a/.cache/loomkit/natives", "'', '', .cache/loomkit/natives"})
    void isKeptWhereCachesAre(String xdgCache, String home, Path expected) {
        assertEquals(expected, NativeBundle.cacheFolder(xdgCache, home));
    }
}
