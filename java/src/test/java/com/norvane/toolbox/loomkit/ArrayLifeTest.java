package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.*;

import com.norvane.toolbox.loomkit.testing.ChildProcess;
import com.norvane.toolbox.loomkit.testing.Together;
import java.io.ByteArrayOutputStream;
import java.io.PrintStream;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.concurrent.CountDownLatch;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class ArrayLifeTest {
    @Test
    void refusesAClosedArrayBesideAnOpenOne() {
        try (NVCellArray open = NVCellArray.row(1.0)) {
            NVCellArray closed = NVCellArray.row(1.0);
            closed.close();
            assertThrows(IllegalStateException.class, () -> closed.equals(open));
            assertThrows(IllegalStateException.class, () -> open.equals(closed));
            assertThrows(IllegalStateException.class, () -> NVCellArray.row(closed));
            assertEquals("NVCellArray (closed)", closed.toString());
        }
    }

    @Test
    void closesInAnyOrderWithWhatSharesData() {
        NVCellArray cell = NVCellArray.row(1.0, "two");
        NVArray element = cell.getAt(0);
        NVCellArray shared = cell.sharedCopy();
        cell.close();
        assertEquals(1, element.asNumeric().doubleValue());
        shared.setAt(0, 5.0);
        shared.close();
        assertEquals(1, element.asNumeric().doubleValue());
        element.close();
    }

    @Test
    void isFreedWhenTheLastUseEnds() {
        NVCellArray cell = NVCellArray.row(1.0);
        ArrayHandle handle = cell.handle();
        handle.acquire();
        cell.close();
        assertTrue(ArrayHandle.LIVE.contains(handle));
        handle.release();
        assertFalse(ArrayHandle.LIVE.contains(handle));
    }

    /** Closing at any moment ends in a value or in an IllegalStateException, on all threads. */
    @Test
    void survivesACloseDuringUse() throws Exception {
        for (int round = 0; round < 600; round++) {
            NVCellArray cell = NVCellArray.row(new double[100], "text");
            Together.run(List.of(
                    use(cell::hashCode),
                    use(() -> cell.getAt(0).asNumeric().toFlatDoubleArray()),
                    use(() -> cell.setAt(1, "changed")),
                    use(cell::close)));
            assertTrue(cell.isClosed());
        }
    }

    private static Callable<Void> use(Runnable use) {
        return () -> {
            try {
                use.run();
            } catch (IllegalStateException closed) {
                assertEquals("the array is closed", closed.getMessage());
            }
            return null;
        };
    }

    /** Writers and readers of one sparse array and one cell, whose native tables move under them. */
    @Test
    void serialisesWritersOfSparseArraysAndCells() throws Exception {
        try (NVNumericArray sparse = NVNumericArray.sparse(new int[0], new int[0], new double[0], 64, 64);
                NVCellArray cell = NVCellArray.empty(4)) {
            List<Callable<Void>> users = new ArrayList<>();
            for (int thread = 0; thread < 4; thread++) {
                int column = thread;
                users.add(() -> {
                    for (int i = 1; i <= 64; i++) {
                        sparse.set(1.0, i, column * 16 + 1);
                        cell.setAt(column, new double[i]);
                        cell.getAt((column + 1) % 4).close();
                        sparse.toFlatDoubleArray();
                    }
                    return null;
                });
            }
            Together.run(users);
            assertEquals(4 * 64, sparse.numberOfNonZeros());
            for (int i = 0; i < 4; i++) {
                assertEquals(64, cell.getAt(i).asNumeric().numberOfElements());
            }
        }
    }

    /** Loses more arrays than one block holds, and closes another, until so many of {@code -Dreports} are reported. */
    public static final class LosingProgram {
        public static void main(String[] args) {
            boolean failing = Boolean.getBoolean("failing");
            int wanted = Integer.getInteger("reports");
            CountDownLatch reports = new CountDownLatch(wanted);
            Loomkit.setErrorOutput(new PrintStream(new ByteArrayOutputStream()) {
                @Override
                public void println(Object report) {
                    if (reports.getCount() == wanted) {
                        System.out.println(report);
                    }
                    reports.countDown();
                    if (failing) {
                        Thread.currentThread().interrupt();
                        throw new IllegalStateException("the stream is broken");
                    }
                }
            });
            NVCharArray.of("closed").close();
            loseArrays();
            for (int round = 0; round < 20 || reports.getCount() > 0; round++) {
                System.gc();
                NVNumericArray.zeros(100);
                Thread.onSpinWait();
            }
            System.out.println("all reported");
        }

        private static void loseArrays() {
            for (int i = 0; i < 1100; i++) {
                NVNumericArray.of(i);
            }
        }
    }

    /** The stream that fails does so on each report; later ones come all the same. */
    @ParameterizedTest
    @CsvSource({"report, 1100, false", "report, 1100, true", "none, 0, false"})
    void reportsWhereALostArrayWasMadeWhenAsked(String leaks, int reports, boolean failing) throws Exception {
        ChildProcess child = ChildProcess.run(LosingProgram.class,
                List.of("-Dloomkit.leaks=" + leaks, "-Dreports=" + reports, "-Dfailing=" + failing));

        assertEquals(0, child.exitCode, child.output);
        assertTrue(child.output.endsWith("all reported\n"), child.output);
        assertFalse(child.output.contains("NVCharArray"), child.output);
        if (reports == 0) {
            assertEquals("all reported\n", child.output);
        } else {
            assertTrue(child.output.startsWith("loomkit: an NVNumericArray was not closed"), child.output);
            assertTrue(child.output.contains("$LosingProgram.loseArrays(ArrayLifeTest.java:"), child.output);
        }
    }
}
