package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.norvane.toolbox.loomkit.testing.ChildProcess;
import java.io.ByteArrayOutputStream;
import java.io.File;
import java.io.IOException;
import java.io.PrintStream;
import java.lang.ref.WeakReference;
import java.lang.reflect.InvocationTargetException;
import java.net.MalformedURLException;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicReference;
import java.util.function.DoubleUnaryOperator;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** Several class loaders that each have the binding, in processes of their own. */
class ClassLoaderTest {
    @TempDir Path folder;

    /** Loads the binding and these tests anew. May run code of the application before the class that calls Java objects. */
    static final class OwnLoader extends URLClassLoader {
        private final AtomicReference<Runnable> first;

        OwnLoader(AtomicReference<Runnable> first) {
            super(classPath());
            this.first = first;
        }

        OwnLoader() {
            this(new AtomicReference<>());
        }

        private static URL[] classPath() {
            return Stream.of(System.getProperty("java.class.path").split(File.pathSeparator))
                    .map(OwnLoader::urlOf)
                    .toArray(URL[]::new);
        }

        private static URL urlOf(String place) {
            try {
                return Path.of(place).toUri().toURL();
            } catch (MalformedURLException failure) {
                throw new IllegalArgumentException(failure);
            }
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

        Object call(String method, Object argument) throws ReflectiveOperationException {
            try {
                return loadClass(Application.class.getName()).getMethod(method, Object.class).invoke(null, argument);
            } catch (InvocationTargetException failure) {
                throw new IllegalStateException(failure.getCause());
            }
        }
    }

    /** What an application does; each class loader has one. */
    public static final class Application {
        private static Component open() throws IOException {
            String cache = System.getProperty("cache");
            if (cache != null) {
                Loomkit.start("-cachedir", cache);
            }
            return Component.open(
                    Path.of(System.getProperty("loomkit.test.components"), "showcase.kpa"));
        }

        private static long minimise(Component showcase) {
            DoubleUnaryOperator parabola = x -> (x - 2) * (x - 2);
            try (NVArray minimum = showcase.call1("minimize", parabola, 0.0, 9.0)) {
                return Math.round(minimum.asNumeric().doubleValue());
            }
        }

        /** Closed by the time that the class loader goes. */
        private static Component last;

        /** Calls, prints, passes a lambda, fails. Arrays are left to the collector. */
        public static String use(Object name) throws IOException {
            ByteArrayOutputStream printed = new ByteArrayOutputStream();
            try (Component showcase = open()) {
                last = showcase;
                showcase.setOutput(new PrintStream(printed, true));
                showcase.call("say", 0, "I am " + name);
                String text = showcase.call1("shout", "" + name).toString().trim() + " " + minimise(showcase);
                try {
                    showcase.call("fail_deep", 1, "failed in " + name);
                } catch (NVException failure) {
                    text += " " + failure.getMessage();
                }
                return text + ": " + printed;
            }
        }

        public static Object array(Object element) {
            return NVNumericArray.of((double) element);
        }

        /** Gives an array, of whichever class loader, to a function. */
        public static String give(Object array) throws IOException {
            try (Component showcase = open()) {
                return showcase.call1("same", array).toString();
            } catch (IllegalArgumentException refused) {
                return refused.getMessage();
            }
        }

        public static boolean start(Object option) {
            if (option == null) {
                Loomkit.start();
            } else {
                Loomkit.start("-logfile", option.toString());
            }
            return Loomkit.isRunning();
        }

        public static boolean stop(Object ignored) {
            Loomkit.stop();
            return Loomkit.isRunning();
        }

        public static String logFile(Object ignored) {
            return Loomkit.logFile();
        }

        /** Comes back here while the class behind Java objects is loaded. */
        @SuppressWarnings("unchecked")
        public static String callBack(Object first) throws IOException {
            StringBuilder minima = new StringBuilder();
            ((AtomicReference<Runnable>) first).set(() -> {
                try (Component showcase = open()) {
                    minima.append(minimise(showcase)).append(' ');
                } catch (IOException failure) {
                    throw new IllegalStateException(failure);
                }
            });
            try (Component showcase = open()) {
                return minima.append(minimise(showcase)).toString();
            }
        }
    }

    private static String expected(String name) {
        return name.toUpperCase() + " 2 failed in " + name + ": I am " + name + "\n";
    }

    /** Ends with 2 when the calls don't. */
    public static final class CallBack {
        public static void main(String[] args) throws Exception {
            AtomicReference<Runnable> first = new AtomicReference<>();
            Thread worker = new Thread(() -> {
                try {
                    System.out.println(new OwnLoader(first).call("callBack", first));
                } catch (ReflectiveOperationException failure) {
                    throw new IllegalStateException(failure);
                }
            });
            worker.setDaemon(true);
            worker.start();
            worker.join(TimeUnit.MINUTES.toMillis(1));
            Runtime.getRuntime().halt(worker.isAlive() ? 2 : 0);
        }
    }

    @Test
    void mayCallBackWhileTheClassBehindJavaObjectsIsLoaded() throws Exception {
        ChildProcess child = ChildProcess.run(CallBack.class, List.of());
        assertEquals("2 2\n", child.output);
        assertEquals(0, child.exitCode);
    }

    /** Uses the binding in loaders at once, and passes an array from one to another. */
    public static final class Together {
        public static void main(String[] args) throws Exception {
            ExecutorService threads = Executors.newFixedThreadPool(4);
            List<Callable<String>> uses = new ArrayList<>();
            for (int i = 0; i < 4; i++) {
                OwnLoader loader = new OwnLoader();
                for (int round = 0; round < 8; round++) {
                    String name = "loader" + i + "round" + round;
                    uses.add(() -> expected(name).equals(loader.call("use", name)) ? "right" : "wrong in " + name);
                }
            }
            for (Future<String> use : threads.invokeAll(uses)) {
                System.out.println(use.get());
            }
            threads.shutdown();
            Object foreign = new OwnLoader().call("array", 3.0);
            System.out.println(new OwnLoader().call("give", foreign));
        }
    }

    @Test
    void workSideBySideFromOneFolder() throws Exception {
        ChildProcess child = ChildProcess.run(Together.class, List.of("-Xcheck:jni"));
        List<String> lines = child.output.lines().filter(line -> !line.equals("right")).collect(Collectors.toList());
        assertEquals(1, lines.size(), child.output);
        assertTrue(lines.get(0).startsWith("the NVNumericArray is of the class loader "), child.output);
        assertEquals(0, child.exitCode);
    }

    /** Starts and stops in two loaders. */
    public static final class Starts {
        public static void main(String[] args) throws Exception {
            OwnLoader one = new OwnLoader();
            OwnLoader two = new OwnLoader();
            System.out.println(one.call("start", args[0]) + " " + two.call("stop", null) + " " + one.call("logFile", null));
            System.out.println(two.call("start", null) + " " + one.call("stop", null) + " " + two.call("logFile", null));
            System.out.println(two.call("stop", null) + " " + two.call("logFile", null));
        }
    }

    @Test
    void startAndStopTheRuntimeEachForItself() throws Exception {
        String log = folder.resolve("log").toString();
        ProcessBuilder program = ChildProcess.builder(Starts.class, List.of(
                "-Dloomkit.native.dir=" + System.getProperty("loomkit.native.dir")));
        program.command().add(log);
        ChildProcess child = ChildProcess.run(program);
        assertEquals("true false " + log + "\ntrue false " + log + "\nfalse \n", child.output);
    }

    /** Loads, uses and drops the binding over and over, and tells what is left. */
    public static final class Redeploys {
        private static final long PATIENCE_NANOS = TimeUnit.MINUTES.toNanos(2);

        public static void main(String[] args) throws Exception {
            List<WeakReference<OwnLoader>> loaders = new ArrayList<>();
            for (int i = 0; i < Integer.getInteger("redeploys"); i++) {
                loaders.add(redeploy("round" + i));
                if (i % 10 == 0) {
                    System.gc();
                }
            }
            long end = System.nanoTime() + PATIENCE_NANOS;
            while (loaders.stream().anyMatch(loader -> loader.get() != null) && System.nanoTime() < end) {
                System.gc();
                Thread.sleep(100);
            }
            System.out.println("living " + loaders.stream().filter(loader -> loader.get() != null).count());
            while (copies() > 0 && System.nanoTime() < end) {
                System.gc();
                Thread.sleep(100);
            }
            System.out.println("mapped " + copies());
        }

        private static WeakReference<OwnLoader> redeploy(String name) throws Exception {
            try (OwnLoader loader = new OwnLoader()) {
                Object result = loader.call("use", name);
                if (!expected(name).equals(result)) {
                    System.out.println("wrong: " + result);
                }
                return new WeakReference<>(loader);
            }
        }

        /** How many libraries of class loaders are in the process. */
        private static long copies() throws IOException {
            try (Stream<String> maps = Files.lines(Path.of("/proc/self/maps"), StandardCharsets.ISO_8859_1)) {
                return maps.filter(line -> line.contains("/libnativevrl.so") && line.contains("r-xp")).count();
            }
        }
    }

    @ParameterizedTest
    @CsvSource({"true, 100", "false, 3"})
    void leaveNothingBehindWhenTheyGo(boolean fromJar, int redeploys) throws Exception {
        String natives = System.getProperty("loomkit.native.dir");
        Path temporary = Files.createDirectory(folder.resolve("tmp"));
        List<String> options = new ArrayList<>(List.of("-Xcheck:jni", "-Dredeploys=" + redeploys,
                "-Dcache=" + folder.resolve("components"), "-Djava.io.tmpdir=" + temporary, "-Duser.home=/proc/self",
                "-Dloomkit.test.components=" + System.getProperty("loomkit.test.components")));
        ProcessBuilder program = ChildProcess.builder(Redeploys.class, options);
        program.environment().remove("XDG_CACHE_HOME");
        if (fromJar) {
            // The class path of the tests has the classes without the natives.
            List<String> command = program.command();
            int path = command.indexOf("-cp") + 1;
            command.set(path, Path.of(natives).resolveSibling("loomkit.jar") + File.pathSeparator + command.get(path));
        } else {
            program.command().add(1, "-Dloomkit.native.dir=" + natives);
        }

        ChildProcess child = ChildProcess.run(program);

        assertEquals("living 0\nmapped 0\n", child.output);
        assertEquals(0, child.exitCode);
        try (Stream<Path> files = Files.list(temporary)) {
            assertFalse(files.findAny().isPresent());
        }
    }
}
