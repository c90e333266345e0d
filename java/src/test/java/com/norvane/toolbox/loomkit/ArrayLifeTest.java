package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import org.junit.jupiter.api.Test;

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

    /** Closing at any moment ends in a value or in an IllegalStateException, on all threads. */
    @Test
    void survivesACloseDuringUse() throws Exception {
        ExecutorService threads = Executors.newFixedThreadPool(4);
        for (int round = 0; round < 600; round++) {
            NVCellArray cell = NVCellArray.row(new double[100], "text");
            CountDownLatch start = new CountDownLatch(4);
            List<Callable<Boolean>> users = new ArrayList<>();
            users.add(() -> used(start, cell::hashCode));
            users.add(() -> used(start, () -> cell.getAt(0).asNumeric().toFlatDoubleArray()));
            users.add(() -> used(start, () -> cell.setAt(1, "changed")));
            users.add(() -> used(start, cell::close));
            for (Future<Boolean> user : threads.invokeAll(users)) {
                user.get();
            }
            assertTrue(cell.isClosed());
        }
        threads.shutdown();
    }

    private static boolean used(CountDownLatch start, Runnable use) throws InterruptedException {
        start.countDown();
        start.await();
        try {
            use.run();
            return true;
        } catch (IllegalStateException closed) {
            assertEquals("the array is closed", closed.getMessage());
            return false;
        }
    }

    /** Writers and readers of one sparse array and one cell, whose native tables move under them. */
    @Test
    void serialisesWritersOfSparseArraysAndCells() throws Exception {
        ExecutorService threads = Executors.newFixedThreadPool(4);
        try (NVNumericArray sparse = NVNumericArray.sparse(new int[0], new int[0], new double[0], 64, 64);
                NVCellArray cell = NVCellArray.empty(4)) {
            List<Callable<Void>> users = new ArrayList<>();
            for (int thread = 0; thread < 4; thread++) {
                int column = thread;
                users.add(
                        () -> {
                            for (int i = 1; i <= 64; i++) {
                                sparse.set(1.0, i, column * 16 + 1);
                                cell.setAt(column, new double[i]);
                                cell.getAt((column + 1) % 4).close();
                                sparse.toFlatDoubleArray();
                            }
                            return null;
                        });
            }
            for (Future<Void> user : threads.invokeAll(users)) {
                user.get();
            }
            assertEquals(4 * 64, sparse.numberOfNonZeros());
            for (int i = 0; i < 4; i++) {
                assertEquals(64, cell.getAt(i).asNumeric().numberOfElements());
            }
        }
        threads.shutdown();
    }
}
