package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import java.io.IOException;
import java.io.InputStream;
import java.io.PrintStream;
import java.io.UncheckedIOException;
import java.nio.charset.StandardCharsets;
import java.util.Objects;
import java.util.concurrent.Callable;

/**
 * The native runtime of this process. It starts by itself when a component is opened; start it by hand to give it
 * options. All methods may be called from any thread, and again.
 *
 * <p>Several class loaders may each have this library, as web applications do. They share one runtime, and each starts
 * and stops it for itself: it runs until the last of them has stopped it or has been unloaded.
 */
public final class Loomkit {
    private static final Object LOCK = new Object();

    private static boolean started;
    /** How many components there are, open or about to be. */
    private static int printing;

    private static volatile PrintStream output;
    private static volatile PrintStream errorOutput;

    private Loomkit() {}

    /**
     * Starts the runtime, or gives options to the one that runs. Without options, one that another class loader has
     * started stays as it is.
     *
     * @param options {@code -nojvm}, {@code -nodisplay}, {@code -logfile FILE}, {@code -cachedir DIR}, each text and
     *     its value being separate elements. Arrays can be made and read without a running runtime
     * @throws NVException for an option that is not known, or a runtime that can't start
     */
    public static void start(String... options) {
        String[] checked = Objects.requireNonNull(options, "options").clone();
        for (String option : checked) {
            Objects.requireNonNull(option, "option");
        }
        synchronized (LOCK) {
            if (started && checked.length == 0) {
                return;
            }
            NVKRT.vrlInitializeApplication(checked);
            started = true;
        }
    }

    /**
     * Has text that is printed outside of any call come to the streams, for a component that is about to be opened. Only
     * then there may be such text; and what native code knows of the streams keeps their class loader from being unloaded.
     */
    static void beginPrinting() {
        synchronized (LOCK) {
            if (printing == 0) {
                Callable<PrintStream> errors = Loomkit::errorOutput;
                Callable<PrintStream> text = Loomkit::output;
                NVKRT.vrlSetDefaultPrintHandlers(errors, text);
            }
            printing++;
        }
    }

    /** An instance that is made starts the runtime, also where a stop came between. */
    static void startedByInstance() {
        synchronized (LOCK) {
            started = true;
        }
    }

    /** Matches {@link #beginPrinting}, when the component has ended. */
    static void endPrinting() {
        synchronized (LOCK) {
            if (--printing == 0) {
                NVKRT.vrlResetDefaultPrintHandlers();
            }
        }
    }

    /**
     * Closes all components of this class loader and stops the runtime. Arrays stay as they are. Waits for nobody: a function that runs on
     * another thread runs to its end.
     *
     * @throws NVException when the runtime can't stop
     */
    public static void stop() {
        synchronized (LOCK) {
            if (!started) {
                return;
            }
            Instance.closeAll();
            NVKRT.vrlTerminateApplication();
            started = false;
        }
    }

    /**
     * Whether the runtime runs.
     *
     * @return true between a start and a stop in this class loader
     */
    public static boolean isRunning() {
        synchronized (LOCK) {
            return NVKRT.vrlIsKRTInitialized() && started;
        }
    }

    /**
     * The version of this library.
     *
     * @return such as {@code 1.0.0}
     */
    public static String version() {
        try (InputStream text = Loomkit.class.getResourceAsStream("version.txt")) {
            return new String(text.readAllBytes(), StandardCharsets.UTF_8).trim();
        } catch (IOException failure) {
            throw new UncheckedIOException(failure);
        }
    }

    /**
     * The log file of the runtime.
     *
     * @return its name, empty when there is none
     */
    public static String logFile() {
        return NVKRT.vrlGetLogFileName();
    }

    /**
     * Where the runtime and components without a stream of their own print, from the next text on; once no component is
     * open any more, text is dropped. What a stream
     * fails to take goes to the log file; the function that printed it runs on.
     *
     * @param stream the stream, or null for {@link System#out}
     */
    public static void setOutput(PrintStream stream) {
        output = stream;
    }

    /**
     * Where errors and warnings go, from the next text on.
     *
     * @param stream the stream, or null for {@link System#err}
     */
    public static void setErrorOutput(PrintStream stream) {
        errorOutput = stream;
    }

    /**
     * Where the runtime prints.
     *
     * @return the stream that was set, or the current {@link System#out}
     */
    public static PrintStream output() {
        PrintStream stream = output;
        return stream == null ? System.out : stream;
    }

    /**
     * Where errors and warnings go.
     *
     * @return the stream that was set, or the current {@link System#err}
     */
    public static PrintStream errorOutput() {
        PrintStream stream = errorOutput;
        return stream == null ? System.err : stream;
    }
}
