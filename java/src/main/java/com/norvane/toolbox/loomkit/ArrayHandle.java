package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;
import java.io.PrintStream;
import java.lang.ref.PhantomReference;
import java.lang.ref.ReferenceQueue;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.security.AccessController;
import java.security.PrivilegedAction;
import java.util.Arrays;
import java.util.Set;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.function.Function;

/**
 * Owns one native array on behalf of its wrapper object.
 *
 * <p>The array is freed once: when it is closed and no native call uses it any more, or, where nobody closed it, some
 * time after the wrapper object has become unreachable. A thread of its own gathers the addresses of those and frees
 * them in blocks, one native call a block. It ends when there is no array any more, so that the class loader can go, and
 * another one begins with the next array.
 */
final class ArrayHandle extends PhantomReference<NVBuiltinArray> {
    private static final int BLOCK_OF_ARRAYS = 512;
    private static final boolean REPORT_LEAKS = "report".equals(System.getProperty("loomkit.leaks"));

    private static final ReferenceQueue<NVBuiltinArray> UNREACHABLE = new ReferenceQueue<>();
    static final Set<ArrayHandle> LIVE = ConcurrentHashMap.newKeySet();

    private static final AtomicBoolean CLEANER_RUNS = new AtomicBoolean();
    private static final int IDLE_MILLIS = 1000;

    private final NativePtr pointer;
    private final String kind;
    private final Throwable origin;
    private int users;
    private boolean closed;

    /** A pointer of 0 stands for no array: there is nothing to free then. */
    ArrayHandle(NVBuiltinArray wrapper, NativePtr pointer) {
        super(wrapper, UNREACHABLE);
        this.pointer = pointer;
        this.kind = wrapper.getClass().getSimpleName();
        this.origin = REPORT_LEAKS ? new Throwable() : null;
        if (pointer.get() != 0) {
            LIVE.add(this);
            startCleaner();
        }
    }

    private static void startCleaner() {
        if (CLEANER_RUNS.get() || !CLEANER_RUNS.compareAndSet(false, true)) {
            return;
        }
        try {
            // Nothing of the thread that happens to make an array is to stay with this one, not even its rights.
            PrivilegedAction<Thread> make =
                    () -> new Thread(null, ArrayHandle::runCleaner, "loomkit-array-cleaner", 0, false);
            Thread cleaner = AccessController.doPrivileged(make);
            cleaner.setDaemon(true);
            cleaner.setContextClassLoader(null);
            cleaner.start();
        } catch (RuntimeException | Error noThread) {
            // The next array tries again; until then nothing is lost but time.
            CLEANER_RUNS.set(false);
        }
    }

    private static void runCleaner() {
        try {
            freeUnreachable();
        } catch (RuntimeException | Error failure) {
            CLEANER_RUNS.set(false);
            throw failure;
        }
    }

    /** Runs a native call that can't be overtaken by the end of the array. */
    <R> R use(Function<NativePtr, R> call) {
        NativePtr held = acquire();
        try {
            return call.apply(held);
        } finally {
            release();
        }
    }

    /** Keeps the array alive until the matching {@link #release}. */
    synchronized NativePtr acquire() {
        if (closed) {
            throw new IllegalStateException("the array is closed");
        }
        users++;
        return pointer;
    }

    synchronized void release() {
        users--;
        if (closed && users == 0) {
            free();
        }
    }

    synchronized NativePtr pointer() {
        if (closed) {
            throw new IllegalStateException("the array is closed");
        }
        return pointer;
    }

    synchronized boolean isClosed() {
        return closed;
    }

    synchronized void close() {
        if (!closed) {
            closed = true;
            clear();
            if (users == 0) {
                free();
            }
        }
    }

    private void free() {
        if (LIVE.remove(this)) {
            NVKRT.qxDestroyArray(pointer);
        }
    }

    /** Ends an array that was not closed. Gives the address that is to be freed, or 0 when there is none. */
    private synchronized long abandon() {
        boolean leaked = !closed && pointer.get() != 0;
        closed = true;
        if (leaked && REPORT_LEAKS) {
            reportLeak();
        }
        return users == 0 && LIVE.remove(this) ? pointer.get() : 0;
    }

    private void reportLeak() {
        StringBuilder report = new StringBuilder("loomkit: an ").append(kind).append(" was not closed. It was made");
        for (StackTraceElement frame : origin.getStackTrace()) {
            report.append(System.lineSeparator()).append("\tat ").append(frame);
        }
        PrintStream stream = Loomkit.errorOutput();
        try {
            stream.println(report);
        } catch (RuntimeException | Error lostReport) {
            // The stream is the application's; one that fails must not keep the array from being freed.
        }
    }

    /** Ends when no array lives and has not for a while: nothing else frees what nobody closed. */
    private static void freeUnreachable() {
        ByteBuffer block = ByteBuffer.allocate(BLOCK_OF_ARRAYS * Long.BYTES).order(ByteOrder.nativeOrder());
        while (true) {
            try {
                ArrayHandle handle = block.hasRemaining() ? (ArrayHandle) UNREACHABLE.remove(IDLE_MILLIS) : null;
                if (handle == null && block.position() == 0 && mayEnd()) {
                    return;
                }
                while (handle != null) {
                    block.putLong(handle.abandon());
                    handle = block.hasRemaining() ? (ArrayHandle) UNREACHABLE.poll() : null;
                }
                byte[] addresses = Arrays.copyOf(block.array(), block.position());
                block.clear();
                if (addresses.length > 0) {
                    NVKRT.qxDestroyArray(addresses);
                }
            } catch (InterruptedException | RuntimeException | Error passing) {
                // A stream that took a report may have left an interrupt; memory may be short for a while. Addresses
                // that were not handed over yet are still in the block.
            }
        }
    }
    /** Whether this thread is not needed any more: an array that is made from then on starts another. */
    private static boolean mayEnd() {
        if (!LIVE.isEmpty()) {
            return false;
        }
        CLEANER_RUNS.set(false);
        return LIVE.isEmpty() || !CLEANER_RUNS.compareAndSet(false, true);
    }
}
