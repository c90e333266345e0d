package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.norvane.toolbox.loomkit.testing.ChildProcess;
import java.io.ByteArrayOutputStream;
import java.io.PrintStream;
import java.util.List;
import java.util.concurrent.CountDownLatch;
import org.junit.jupiter.api.Test;

class LeakReportTest {
    private static final String NATIVES = "-Dloomkit.native.dir=" + System.getProperty("loomkit.native.dir");

    /** Loses more arrays than one block holds, closes another, and ends when all that were lost are reported. */
    public static final class Program {
        private static final int LOST = 1100;

        public static void main(String[] args) throws InterruptedException {
            CountDownLatch reports = new CountDownLatch(LOST);
            PrintStream counting =
                    new PrintStream(new ByteArrayOutputStream()) {
                        @Override
                        public void println(Object report) {
                            if (reports.getCount() == LOST) {
                                System.out.println(report);
                            }
                            reports.countDown();
                        }
                    };
            Loomkit.setErrorOutput(counting);
            closeOne();
            loseArrays();
            while (reports.getCount() > 0) {
                System.gc();
                Thread.onSpinWait();
            }
            System.out.println("all reported");
        }

        private static void closeOne() {
            NVCharArray.of("closed").close();
        }

        private static void loseArrays() {
            for (int i = 0; i < LOST; i++) {
                NVNumericArray.of(i);
            }
        }
    }

    /** Loses arrays with a stream that throws on the first report, and ends when later ones are reported. */
    public static final class FailingStreamProgram {
        public static void main(String[] args) throws InterruptedException {
            CountDownLatch reports = new CountDownLatch(2);
            Loomkit.setErrorOutput(
                    new PrintStream(new ByteArrayOutputStream()) {
                        @Override
                        public void println(Object report) {
                            reports.countDown();
                            Thread.currentThread().interrupt();
                            throw new IllegalStateException("the stream is broken");
                        }
                    });
            while (reports.getCount() > 0) {
                NVNumericArray.zeros(10);
                System.gc();
                Thread.sleep(1);
            }
            System.out.println("went on");
        }
    }

    /** Loses an array without a report, and lives on. */
    public static final class SilentProgram {
        public static void main(String[] args) {
            for (int round = 0; round < 20; round++) {
                for (int i = 0; i < 1000; i++) {
                    NVNumericArray.zeros(100);
                }
                System.gc();
            }
            System.out.println("done");
        }
    }

    @Test
    void tellsWhereALostArrayWasMade() throws Exception {
        ChildProcess child = ChildProcess.run(Program.class, List.of(NATIVES, "-Dloomkit.leaks=report"));

        assertEquals(0, child.exitCode, child.output);
        assertTrue(child.output.contains("loomkit: an NVNumericArray was not closed"), child.output);
        assertTrue(child.output.contains("LeakReportTest$Program.loseArrays(LeakReportTest.java:"), child.output);
        assertTrue(child.output.contains("all reported"), child.output);
        assertFalse(child.output.contains("NVCharArray"), child.output);
    }

    @Test
    void goesOnAfterAStreamThatThrows() throws Exception {
        ChildProcess child =
                ChildProcess.run(FailingStreamProgram.class, List.of(NATIVES, "-Dloomkit.leaks=report"));

        assertEquals(0, child.exitCode, child.output);
        assertEquals("went on", child.output.trim());
    }

    @Test
    void saysNothingUnlessAsked() throws Exception {
        ChildProcess child = ChildProcess.run(SilentProgram.class, List.of(NATIVES));

        assertEquals(0, child.exitCode, child.output);
        assertEquals("done", child.output.trim());
    }
}
