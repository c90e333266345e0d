package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;
import java.util.Set;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.atomic.AtomicBoolean;

/**
 * Owns the native instance of a component: it ends with the component, with the runtime, or after the component has
 * become unreachable, whichever comes first. A call that is under way keeps what it needs by itself.
 */
final class Instance implements Runnable {
    private static final Set<Instance> OPEN = ConcurrentHashMap.newKeySet();

    private final NativePtr pointer;
    private final AtomicBoolean closed = new AtomicBoolean();

    Instance(NativePtr pointer) {
        this.pointer = pointer;
        OPEN.add(this);
    }

    NativePtr pointer() {
        if (closed.get()) {
            throw new IllegalStateException("the component is closed");
        }
        return pointer;
    }

    boolean isClosed() {
        return closed.get();
    }

    void close() {
        if (closed.compareAndSet(false, true)) {
            OPEN.remove(this);
            NVKRT.vrlTerminateInstance(pointer);
        }
    }

    /** For a component that nobody closed. */
    @Override
    public void run() {
        close();
    }

    static void closeAll() {
        OPEN.forEach(Instance::close);
    }
}
