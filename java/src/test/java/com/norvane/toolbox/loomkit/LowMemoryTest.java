package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assumptions.assumeTrue;

import com.norvane.toolbox.loomkit.testing.ChildProcess;
import java.io.IOException;
import java.io.InputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import org.junit.jupiter.api.Test;

/** Calls that ask for more native memory than the process may have: each ends in Java, and the process goes on. */
class LowMemoryTest {
    private interface Call {
        void run() throws IOException;
    }

    /** An archive of zeros, as long as anybody asks for. */
    private static final class Zeros extends InputStream {
        @Override
        public int read() {
            return 0;
        }

        @Override
        public int read(byte[] target, int offset, int count) {
            return count;
        }
    }

    /** Leaves itself ever more room, which some step or other of each call then exceeds. */
    public static final class Program {
        public static void main(String[] arguments) throws Exception {
            String huge = "x".repeat(150_000_000);
            try (Component showcase = TestComponents.open("showcase")) {
                long mapped = mappedKilobytes();
                for (int megabytes : new int[] {100, 250, 400, 550}) {
                    limit(mapped + megabytes * 1024L);
                    expectFailure(() -> Component.open(new Zeros(), 300_000_000).close());
                    expectFailure(() -> showcase.call(huge, 0));
                    expectFailure(() -> Loomkit.start(huge));
                    double same = showcase.call1("same", 1.5).asNumeric().doubleValue();
                    System.out.println("same: " + same);
                }
            }
        }

        private static void expectFailure(Call call) throws IOException {
            try {
                call.run();
            } catch (NVException | OutOfMemoryError expected) {
                return;
            }
            throw new AssertionError("nothing was thrown");
        }

        private static long mappedKilobytes() throws IOException {
            for (String line : Files.readAllLines(Path.of("/proc/self/status"))) {
                if (line.startsWith("VmSize:")) {
                    return Long.parseLong(line.replaceAll("\\D", ""));
                }
            }
            throw new AssertionError("the system doesn't tell the size of the process");
        }

        /** The most that this process may map from here on. */
        private static void limit(long kilobytes) throws Exception {
            String process = Long.toString(ProcessHandle.current().pid());
            int code =
                    new ProcessBuilder("prlimit", "--pid", process, "--as=" + kilobytes * 1024 + ":")
                            .inheritIO()
                            .start()
                            .waitFor();
            if (code != 0) {
                throw new AssertionError("no limit could be set");
            }
        }
    }

    @Test
    void endsInAnExceptionAndNotTheProcess() throws Exception {
        assumeTrue(System.getenv("LD_PRELOAD") == null, "a sanitizer maps more than any limit");
        ChildProcess child = ChildProcess.run(
                Program.class, List.of("-Xms800m", "-Xmx800m", "-XX:+UseSerialGC", "-XX:TieredStopAtLevel=1"));

        assertEquals(0, child.exitCode, child.output);
        assertEquals("same: 1.5\n".repeat(4), child.output);
    }
}
