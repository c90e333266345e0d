package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertEquals;

import com.norvane.toolbox.loomkit.testing.ChildProcess;
import java.io.File;
import java.io.IOException;
import java.net.MalformedURLException;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.file.Path;
import java.util.List;
import java.util.concurrent.atomic.AtomicReference;
import java.util.function.DoubleUnaryOperator;
import org.junit.jupiter.api.Test;

class ClassLoaderTest {
    /** Loads the binding itself, and runs code of the application before it loads the class that calls Java objects. */
    static final class CallingLoader extends URLClassLoader {
        private final AtomicReference<Runnable> first;

        CallingLoader(URL[] classPath, AtomicReference<Runnable> first) {
            super(classPath);
            this.first = first;
        }

        @Override
        public Class<?> loadClass(String name) throws ClassNotFoundException {
            Runnable callback = name.endsWith(".ObjectInvoker") ? first.getAndSet(null) : null;
            if (callback != null) {
                callback.run();
            }
            synchronized (getClassLoadingLock(name)) {
                Class<?> known = findLoadedClass(name);
                if (known != null) {
                    return known;
                }
                return name.startsWith("com.norvane.") ? findClass(name) : super.loadClass(name);
            }
        }
    }

    /** What the loader's own classes do: a call of a Java object during the first one's preparation. */
    public static final class Calls {
        public static void run(AtomicReference<Runnable> first) throws IOException {
            try (Component showcase = TestComponents.open("showcase")) {
                first.set(() -> minimise(showcase));
                minimise(showcase);
            }
        }

        private static void minimise(Component showcase) {
            DoubleUnaryOperator parabola = x -> (x - 2) * (x - 2);
            double minimum = showcase.call1("minimize", parabola, 0.0, 9.0).asNumeric().doubleValue();
            System.out.println("minimum at " + Math.round(minimum));
        }
    }

    /** Ends with 2 when the calls don't. */
    public static final class Program {
        private static final long PATIENCE_MILLIS = 60_000;

        public static void main(String[] args) throws Exception {
            String[] places = System.getProperty("java.class.path").split(File.pathSeparator);
            URL[] classPath = new URL[places.length];
            for (int i = 0; i < places.length; i++) {
                classPath[i] = urlOf(places[i]);
            }
            AtomicReference<Runnable> first = new AtomicReference<>();
            Class<?> calls = new CallingLoader(classPath, first).loadClass(Calls.class.getName());
            Thread worker = new Thread(() -> call(calls, first));
            worker.setDaemon(true);
            worker.start();
            worker.join(PATIENCE_MILLIS);
            Runtime.getRuntime().halt(worker.isAlive() ? 2 : 0);
        }

        private static URL urlOf(String place) throws MalformedURLException {
            return Path.of(place).toUri().toURL();
        }

        private static void call(Class<?> calls, AtomicReference<Runnable> first) {
            try {
                calls.getMethod("run", AtomicReference.class).invoke(null, first);
            } catch (ReflectiveOperationException failure) {
                throw new IllegalStateException(failure);
            }
        }
    }

    @Test
    void mayCallBackWhileItLoadsTheClassBehindJavaObjects() throws IOException, InterruptedException {
        ChildProcess child = ChildProcess.run(Program.class, List.of());
        assertEquals("minimum at 2\nminimum at 2\n", child.output);
        assertEquals(0, child.exitCode);
    }
}
