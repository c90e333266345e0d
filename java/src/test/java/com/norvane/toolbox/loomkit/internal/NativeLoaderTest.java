package com.norvane.toolbox.loomkit.internal;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.norvane.toolbox.loomkit.Loomkit;
import com.norvane.toolbox.loomkit.testing.ChildProcess;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.util.List;
import java.util.Set;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class NativeLoaderTest {
    @TempDir Path folder;

    /** Loads the natives, and tells how that went. */
    public static final class Program {
        public static void main(String[] args) throws IOException {
            try {
                if (System.getProperty("before") != null) {
                    System.load(System.getProperty("before"));
                }
                if (Boolean.getBoolean("start")) {
                    Loomkit.start();
                }
                System.out.println("running: " + Loomkit.isRunning());
                try (Stream<String> maps = Files.lines(Path.of("/proc/self/maps"))) {
                    maps.filter(line -> line.matches(".*lib(krt|nativevrl|loomkit)[.]so"))
                            .map(line -> line.substring(line.indexOf('/')))
                            .distinct()
                            .forEach(System.out::println);
                }
            } catch (UnsatisfiedLinkError failure) {
                System.out.println(failure.getMessage());
            }
        }
    }

    private static ChildProcess runWith(String... options) throws IOException, InterruptedException {
        ProcessBuilder program = ChildProcess.builder(Program.class, List.of(options));
        program.environment().remove("XDG_CACHE_HOME");
        return run(program);
    }

    private static ChildProcess run(ProcessBuilder program) throws IOException, InterruptedException {
        ChildProcess child = ChildProcess.run(program);
        assertEquals(0, child.exitCode, child.output);
        return child;
    }

    @Test
    void tellsWhatTheStatedFolderLacksAndTriesNothingElse() throws Exception {
        ChildProcess child = runWith("-Dloomkit.native.dir=" + folder);

        assertTrue(child.output.contains("loomkit.native.dir: " + folder.resolve("libloomkit.so") + " is not there"),
                child.output);
        assertFalse(child.output.contains("java.library.path"), child.output);
    }

    @Test
    void tellsAllPlacesThatWereTried() throws Exception {
        Files.write(folder.resolve("libloomkit.so"), new byte[] {1, 2, 3});
        Path missing = folder.resolve("missing");
        ChildProcess child = runWith("-Djava.library.path=" + missing + ":" + folder, "-Duser.home=" + folder);

        assertTrue(child.output.contains(missing.resolve("libloomkit.so") + " is not there"), child.output);
        assertTrue(child.output.contains("java.library.path: " + folder.resolve("libloomkit.so") + ": "),
                child.output);
        assertTrue(child.output.contains("the jar's own libraries: no natives.sha256"), child.output);
    }

    @Test
    void findsTheLibraryOnTheLibraryPath() throws Exception {
        String natives = System.getProperty("loomkit.native.dir");
        ChildProcess child = runWith("-Djava.library.path=" + folder + ":" + natives);

        assertTrue(child.output.contains("running: false"), child.output);
    }

    /** A library of the natives, copied to the test's folder, and with a byte more where it is to be another build. */
    private Path copy(String name, boolean isOther) throws IOException {
        Path copy = Files.copy(Path.of(System.getProperty("loomkit.native.dir"), name), folder.resolve(name));
        if (isOther) {
            Files.write(copy, new byte[] {0}, StandardOpenOption.APPEND);
        }
        return copy;
    }

    @Test
    void takesAllLibrariesFromOneFolderWhateverTheEnvironmentSays() throws Exception {
        String natives = System.getProperty("loomkit.native.dir");
        copy("libkrt.so", true);
        copy("libnativevrl.so", true);
        ProcessBuilder program = ChildProcess.builder(Program.class, List.of("-Dloomkit.native.dir=" + natives));
        program.environment().put("LD_LIBRARY_PATH", folder.toString());

        List<String> output = List.of(run(program).output.split("\n"));

        assertEquals("running: false", output.get(0));
        assertEquals(Set.of(natives + "/libkrt.so", natives + "/libnativevrl.so", natives + "/libloomkit.so"),
                Set.copyOf(output.subList(1, output.size())));
    }

    @Test
    void startsItsOwnLibraryBesideThatOfAHost() throws Exception {
        copy("libkrt.so", false);
        Path host = copy("libnativevrl.so", false);
        ProcessBuilder program = ChildProcess.builder(Program.class, List.of("-Dstart=true",
                "-Dloomkit.native.dir=" + System.getProperty("loomkit.native.dir")));
        program.environment().merge("LD_PRELOAD", host.toString(), (others, own) -> others + " " + own);

        assertTrue(run(program).output.contains("running: true"));
    }

    @ParameterizedTest
    @ValueSource(booleans = {true, false})
    void doesNotMixBuilds(boolean isOther) throws Exception {
        String natives = System.getProperty("loomkit.native.dir");
        Path before = copy("libkrt.so", isOther);

        ChildProcess child = runWith("-Dloomkit.native.dir=" + natives, "-Dbefore=" + before);

        assertTrue(child.output.contains(isOther
                ? "the process already has " + before + ", of another build than " + natives + "/libkrt.so"
                : "running: false"), child.output);
    }
}
