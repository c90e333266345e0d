package com.norvane.toolbox.loomkit.testing;

import java.io.IOException;
import java.lang.ref.WeakReference;
import java.net.MalformedURLException;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.file.Files;
import java.nio.file.Path;

/** Loads the native library with a class loader, lets both go, and does so again. Exits 0 when every round worked. */
public final class LoaderRounds {
    private static final int CELL_CLASS = 1;
    private static final long PATIENCE_NANOS = 60_000_000_000L;

    private LoaderRounds() {}

    /** The argument is the jar of the binding. */
    public static void main(String[] arguments) throws ReflectiveOperationException, IOException {
        for (int round = 1; round <= 3; round++) {
            WeakReference<ClassLoader> loader = use(Path.of(arguments[0]).toUri().toURL());
            long end = System.nanoTime() + PATIENCE_NANOS;
            while (loader.get() != null || isMapped()) {
                if (System.nanoTime() > end) {
                    throw new IllegalStateException("round " + round + ": the library was not unloaded");
                }
                System.gc();
                Thread.yield();
            }
        }
    }

    /** Calls natives through a loader of their own, so that class proxies are built in each round. */
    private static WeakReference<ClassLoader> use(URL jar) throws ReflectiveOperationException, MalformedURLException {
        ClassLoader loader = new URLClassLoader(new URL[] {jar}, ClassLoader.getPlatformClassLoader());
        Class<?> natives = loader.loadClass("com.norvane.toolbox.loomkit.internal.NVKRT");
        Class<?> pointer = loader.loadClass("com.norvane.toolbox.loomkit.internal.NativePtr");
        Object handle = natives.getMethod("qxCreateEmptyArray", int.class).invoke(null, CELL_CLASS);
        Object id = natives.getMethod("qxGetClassID", pointer).invoke(null, handle);
        natives.getMethod("qxDestroyArray", pointer).invoke(null, handle);
        Object path = natives.getMethod("getenv", String.class).invoke(null, "PATH");
        if (!id.equals(CELL_CLASS) || !path.equals(System.getenv("PATH")) || !isMapped()) {
            throw new IllegalStateException("class " + id + ", path " + path + ", mapped " + isMapped());
        }
        return new WeakReference<>(loader);
    }

    private static boolean isMapped() {
        try {
            return Files.readString(Path.of("/proc/self/maps")).contains("/libloomkit.so");
        } catch (IOException failure) {
            throw new IllegalStateException(failure);
        }
    }
}
