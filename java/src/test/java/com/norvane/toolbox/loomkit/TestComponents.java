package com.norvane.toolbox.loomkit;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Comparator;
import java.util.stream.Stream;

/** The example components, opened with a component cache that is the tests' own. */
final class TestComponents {
    private static final Path CACHE = newCache();

    private TestComponents() {}

    private static Path newCache() {
        try {
            Path cache = Files.createTempDirectory("loomkit-tests-");
            Runtime.getRuntime().addShutdownHook(new Thread(() -> delete(cache)));
            return cache;
        } catch (IOException failure) {
            throw new java.io.UncheckedIOException(failure);
        }
    }

    private static void delete(Path folder) {
        try (Stream<Path> all = Files.walk(folder)) {
            all.sorted(Comparator.reverseOrder()).forEach(path -> path.toFile().delete());
        } catch (IOException failure) {
            System.err.println("left behind: " + folder);
        }
    }

    static Path archive(String name) {
        return Path.of(System.getProperty("loomkit.test.components"), name + ".kpa");
    }

    /** Starts the runtime, or gives one that runs the cache again. */
    static void start() {
        Loomkit.start("-cachedir", CACHE.toString());
    }

    static Component open(String name) throws IOException {
        start();
        return Component.open(archive(name));
    }
}
