package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;
import java.lang.ref.Cleaner;
import java.util.Set;
import java.util.concurrent.ConcurrentHashMap;
import java.util.function.Supplier;

/**
 * Owns the native instance of a component. It ends once: when the component was closed and no call uses it any more,
 * when the runtime stops, or after the component has become unreachable, whichever comes first.
 */
final class Instance implements Runnable {
    private static final Set<Instance> LIVE = ConcurrentHashMap.newKeySet();

    private final NativePtr pointer;
    private int users;
    private boolean closed;
    /** It holds on to the instance, and so to its class loader. */
    private Cleaner.Cleanable watch;

    private Instance(NativePtr pointer) {
        this.pointer = pointer;
        LIVE.add(this);
    }

    /** Owns the instance that {@code make} gives. */
    static Instance of(Supplier<NativePtr> make) {
        Loomkit.beginPrinting();
        try {
            return new Instance(make.get());
        } catch (RuntimeException | Error failure) {
            Loomkit.endPrinting();
            throw failure;
        } finally {
            Loomkit.startedByInstance();
        }
    }

    /** Takes what ends the instance once its component is unreachable, and drops it as soon as the instance has ended. */
    void watchedBy(Cleaner.Cleanable newWatch) {
        synchronized (this) {
            watch = newWatch;
        }
        if (!LIVE.contains(this)) {
            newWatch.clean();
        }
    }

    private synchronized Cleaner.Cleanable watch() {
        return watch;
    }

    /** Keeps the instance alive until the matching {@link #release}, unless the runtime stops. */
    synchronized NativePtr acquire() {
        if (closed) {
            throw new IllegalStateException("the component is closed");
        }
        users++;
        return pointer;
    }

    void release() {
        if (isLastUse()) {
            end();
        }
    }

    private synchronized boolean isLastUse() {
        users--;
        return closed && users == 0;
    }

    synchronized boolean isClosed() {
        return closed;
    }

    void close() {
        if (closeUnused()) {
            end();
        }
    }

    private synchronized boolean closeUnused() {
        closed = true;
        return users == 0;
    }

    /** The runtime lets a function that is under way run to its end, and refuses a call that has not reached it yet. */
    private void closeAtOnce() {
        closeUnused();
        end();
    }

    /** Outside of the monitor: the end of a component may run code of its own. */
    private void end() {
        if (LIVE.remove(this)) {
            try {
                NVKRT.vrlTerminateInstance(pointer);
            } finally {
                Loomkit.endPrinting();
                if (watch() != null) {
                    watch().clean();
                }
            }
        }
    }

    /** For a component that nobody closed. */
    @Override
    public void run() {
        close();
    }

    static void closeAll() {
        LIVE.forEach(Instance::closeAtOnce);
    }
}
