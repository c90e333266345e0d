package com.norvane.toolbox.loomkit.internal;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.norvane.toolbox.loomkit.Loomkit;
import com.norvane.toolbox.loomkit.testing.ChildProcess;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class NativeLoaderTest {
    @TempDir Path folder;

    /** Loads the natives, and tells how that went. */
    public static final class Program {
        public static void main(String[] args) {
            try {
                System.out.println("running: " + Loomkit.isRunning());
            } catch (UnsatisfiedLinkError failure) {
                System.out.println(failure.getMessage());
            }
        }
    }

    private ChildProcess runWith(String... options) throws IOException, InterruptedException {
        ChildProcess child = ChildProcess.run(Program.class, List.of(options));
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
}
