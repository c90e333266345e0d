package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.NVKRT;
import com.norvane.toolbox.loomkit.internal.NativePtr;
import com.norvane.toolbox.loomkit.internal.Sha256;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.io.PrintStream;
import java.lang.ref.Cleaner;
import java.lang.ref.Reference;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.Collections;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.Objects;
import java.util.concurrent.Callable;

/**
 * Native functions from a component archive.
 *
 * <pre>{@code
 * try (Component algebra = Component.open(Path.of("linalg.kpa"))) {
 *     double[][] x = algebra.call1("solve", a, b).asNumeric().toDoubleArray();
 * }
 * }</pre>
 *
 * <p>The runtime starts by itself when the first component is opened. A component may be used by several threads.
 *
 * <p>Opening an archive loads its native library, which runs code of its own before any function is called, with the
 * rights of the process: open only what you trust. {@link #describe} tells what an archive holds without running it.
 */
public final class Component implements AutoCloseable {
    /** No function gives more results. */
    private static final int MAX_OUTPUTS = 255;

    private static final Cleaner CLEANER = Cleaner.create();

    /** The streams of a component, which native code asks for before it prints. */
    private static final class Streams {
        private volatile PrintStream output;
        private volatile PrintStream errorOutput;

        PrintStream output() {
            PrintStream stream = output;
            return stream == null ? Loomkit.output() : stream;
        }

        PrintStream errorOutput() {
            PrintStream stream = errorOutput;
            return stream == null ? Loomkit.errorOutput() : stream;
        }
    }

    private final Instance instance;
    private final Streams streams;
    private final String name;
    private final String version;

    /** Asks for the name while the component can be called, so that a closed one has it too. */
    private Component(Instance instance, Streams streams) {
        this.instance = instance;
        this.streams = streams;
        instance.watchedBy(CLEANER.register(this, instance));
        try (NVStructArray info = call1("krt.info").asStruct()) {
            name = textOf(info.get("name"));
            version = textOf(info.get("version"));
        } catch (RuntimeException | Error failure) {
            instance.close();
            throw failure;
        }
    }

    private static String textOf(NVArray array) {
        try (NVCharArray text = array.asChar()) {
            return text.toJavaString();
        }
    }

    /**
     * The name of the component, as its archive states it.
     *
     * @return the name, also when the component is closed
     */
    public String name() {
        return name;
    }

    /**
     * The version of the component, as its archive states it.
     *
     * @return such as {@code 1.0.0}, also when the component is closed
     */
    public String version() {
        return version;
    }

    /** The name and the version, and whether the component is closed. */
    @Override
    public String toString() {
        return name + " " + version + (isClosed() ? " (closed)" : "");
    }

    /**
     * Tells what an archive file holds without running anything of it: no native library is loaded, nothing is unpacked
     * to a file, and the runtime need not run. The file is read once, as a whole, and judged as strictly as by
     * {@link #open(Path)}: structure, paths and limits, {@code component.json}, and the digest of every file. Whether
     * the libraries fit this platform and runtime is not looked at.
     *
     * @param archive a regular file of at most 2<sup>31</sup>-1 bytes, for which there is memory
     * @return what the archive says of itself
     * @throws IOException when the file can't be read or is no valid archive; the message names the file, and the entry
     *     where one is at fault, in characters that are safe to print
     */
    public static ComponentDescription describe(Path archive) throws IOException {
        int size = sizeOf(archive);
        try (InputStream stream = Files.newInputStream(archive)) {
            return new DescribedArchive(readWhole(stream, size)).describe();
        } catch (IOException failure) {
            throw named(archive, failure);
        }
    }

    /** Reads a file that has to end where it did a moment ago. */
    private static byte[] readWhole(InputStream file, int size) throws IOException {
        byte[] bytes;
        try {
            bytes = new byte[size];
        } catch (OutOfMemoryError tooLarge) {
            throw new IOException("the archive has " + size + " bytes, and there is no memory for them", tooLarge);
        }
        if (file.readNBytes(bytes, 0, size) < size || file.read() >= 0) {
            throw new IOException("the archive changed while it was read");
        }
        return bytes;
    }

    /**
     * Opens an archive file.
     *
     * @param archive the file
     * @return a new component
     * @throws IOException when the file can't be read
     * @throws NVException for a file that is no valid archive
     */
    public static Component open(Path archive) throws IOException {
        return open(archive, new ComponentOptions());
    }

    /**
     * Opens an archive file.
     *
     * @param archive the file
     * @param options how
     * @return a new component
     * @throws IOException when the file can't be read
     * @throws NVException for a file that is no valid archive
     */
    public static Component open(Path archive, ComponentOptions options) throws IOException {
        Objects.requireNonNull(options, "options");
        int size = sizeOf(archive);
        try (InputStream stream = Files.newInputStream(archive)) {
            return openSized(stream, size, options);
        } catch (NVException failure) {
            throw named(archive, failure);
        } catch (IOException failure) {
            throw named(archive, failure);
        }
    }

    private static int sizeOf(Path archive) throws IOException {
        long size = Files.size(Objects.requireNonNull(archive, "archive"));
        if (size > Integer.MAX_VALUE) {
            throw new IOException("the archive " + archive + " has " + size + " bytes, more than can be read");
        }
        if (!Files.isRegularFile(archive)) {
            throw new IOException("the archive " + archive + " is not a file");
        }
        return (int) size;
    }

    private static NVException named(Path archive, NVException failure) {
        String[] stack = failure.getNativeStack().toArray(new String[0]);
        NVException named = new NVException(archive + ": " + failure.getMessage(), stack, stack.length);
        named.initCause(failure);
        return named;
    }

    /** Failures of a more special class name their file by themselves. */
    private static IOException named(Path archive, IOException failure) {
        return failure.getClass() == IOException.class
                ? new IOException(archive + ": " + failure.getMessage(), failure)
                : failure;
    }

    /**
     * Opens an archive that a stream gives up to its end.
     *
     * @param archive the stream, which stays open
     * @return a new component
     * @throws IOException when the stream fails
     * @throws NVException for bytes that are no valid archive
     */
    public static Component open(InputStream archive) throws IOException {
        byte[] bytes = Objects.requireNonNull(archive, "archive").readAllBytes();
        return open(new ByteArrayInputStream(bytes), bytes.length);
    }

    /**
     * Opens an archive that a stream gives.
     *
     * @param archive the stream, of which no more than the archive is needed; it stays open
     * @param length the size of the archive in bytes
     * @return a new component
     * @throws IOException when the stream fails
     * @throws IllegalArgumentException for a negative length
     * @throws NVException for a stream that ends early, or bytes that are no valid archive
     */
    public static Component open(InputStream archive, int length) throws IOException {
        return open(archive, length, new ComponentOptions());
    }

    /**
     * Opens an archive that a stream gives.
     *
     * @param archive the stream, of which no more than the archive is needed; it stays open
     * @param length the size of the archive in bytes
     * @param options how
     * @return a new component
     * @throws IOException when the stream fails
     * @throws IllegalArgumentException for a negative length
     * @throws NVException for a stream that ends early, or bytes that are no valid archive
     */
    public static Component open(InputStream archive, int length, ComponentOptions options) throws IOException {
        Objects.requireNonNull(archive, "archive");
        Objects.requireNonNull(options, "options");
        if (length < 0) {
            throw new IllegalArgumentException("an archive can't have " + length + " bytes");
        }
        return openSized(archive, length, options);
    }

    /** Opens an archive, which native code reads from its stream as it comes: in Java it takes no memory as a whole. */
    private static Component openSized(InputStream archive, int length, ComponentOptions options) throws IOException {
        Streams streams = new Streams();
        streams.output = options.output();
        streams.errorOutput = options.errorOutput();
        InputStream source = archive;
        if (options.expectedSha256() != null) {
            byte[] bytes = readFully(archive, length);
            requireDigest(bytes, options.expectedSha256());
            source = new ByteArrayInputStream(bytes);
        }
        Loomkit.start();
        GuardedStream guarded = new GuardedStream(source);
        try {
            Instance instance = Instance.of(() -> initialize(guarded, length, options.folder(), streams));
            return new Component(instance, streams);
        } catch (NVException failure) {
            throw guarded.endedBefore(length) ? endsEarly(guarded.count(), length) : failure;
        }
    }

    private static NVException endsEarly(long count, int length) {
        return new NVException("the archive ends after " + count + " of " + length + " bytes");
    }

    private static void requireDigest(byte[] archive, String expected) {
        String actual = Sha256.hexOf(archive);
        if (!actual.equals(expected)) {
            throw new NVException("the archive has the SHA-256 " + actual + ", not " + expected);
        }
    }

    private static byte[] readFully(InputStream archive, int length) throws IOException {
        byte[] bytes = archive.readNBytes(length);
        if (bytes.length < length) {
            throw endsEarly(bytes.length, length);
        }
        return bytes;
    }

    private static NativePtr initialize(GuardedStream source, int length, Path folder, Streams streams) {
        Callable<PrintStream> output = streams::output;
        Callable<PrintStream> errorOutput = streams::errorOutput;
        return NVKRT.vrlInitializeComponentInstance(
                folder == null,
                0,
                null,
                // White space at the ends of the text is not the folder's for native code, hence the separator.
                folder == null ? null : folder.toAbsolutePath() + "/",
                source,
                length,
                output,
                errorOutput);
    }

    /**
     * Calls a function.
     *
     * <p>Arguments are plain Java data, as for {@link NVBuiltinArray#of}; arrays; or any other objects, lambdas above
     * all, which the function gets as Java objects to call. A single argument that is an array of arrays, a
     * {@code double[][]} say, is one argument; cast it to {@code Object} to spare the compiler its warning. Only an
     * {@code Object[]} or {@code NVArray[]} in the place of all arguments holds the arguments themselves.
     *
     * @param function its name
     * @param nargout how many results are wanted, 0 to 255; the function may act differently for each
     * @param args its arguments
     * @return the results, {@code nargout} of them, each the caller's to close; null where the function gave none
     * @throws NVException when the function fails; its native stack tells where
     * @throws IllegalArgumentException for arguments that are too large, nested too deeply, or contain themselves
     * @throws IllegalStateException when the component or an array is closed
     */
    public NVArray[] call(String function, int nargout, Object... args) {
        Text.checkedName(function, "function name");
        if (nargout < 0 || nargout > MAX_OUTPUTS) {
            throw new IllegalArgumentException("a function can't give " + nargout + " results");
        }
        List<Object> results = Arrays.asList(new Object[nargout]);
        NativePtr pointer = instance.acquire();
        try (Arguments arguments = new Arguments(args)) {
            List<Object> inputs = arguments.values();
            NVKRT.vrlFeval(
                    pointer, function, nargout, results.listIterator(), inputs.size(), inputs.listIterator());
        } catch (NVException failure) {
            // The runtime may have stopped before any function ran; one that runs has a line on the stack.
            if (instance.isClosed() && failure.getNativeStack().isEmpty()) {
                throw new IllegalStateException("the component is closed", failure);
            }
            throw failure;
        } finally {
            instance.release();
            Reference.reachabilityFence(this);
        }
        return Arguments.resultsOf(results);
    }

    /**
     * Calls a function for its one result.
     *
     * @param function its name
     * @param args its arguments, as for {@link #call}
     * @return the result, the caller's to close
     * @throws NVException when the function fails or gives no result
     * @throws IllegalArgumentException as for {@link #call}
     * @throws IllegalStateException as for {@link #call}
     */
    public NVArray call1(String function, Object... args) {
        NVArray result = call(function, 1, args)[0];
        if (result == null) {
            throw new NVException("the function " + function + " gave no result");
        }
        return result;
    }

    /**
     * The functions of the component.
     *
     * @return an unmodifiable map from each name to one line of help, in the order of the archive
     * @throws IllegalStateException when the component is closed
     */
    public Map<String, String> functions() {
        Map<String, String> functions = new LinkedHashMap<>();
        NVArray[] columns = call("krt.functions", 2);
        try (NVCellArray names = columns[0].asCell();
                NVCellArray helps = columns[1].asCell()) {
            for (int i = 0; i < names.numberOfElements(); i++) {
                functions.put(textOf(names.getAt(i)), textOf(helps.getAt(i)));
            }
        }
        return Collections.unmodifiableMap(functions);
    }

    /**
     * What a function does.
     *
     * @param function its name
     * @return one line
     * @throws IllegalArgumentException when the component has no such function
     * @throws IllegalStateException when the component is closed
     */
    public String help(String function) {
        String line = functions().get(Objects.requireNonNull(function, "function"));
        if (line == null) {
            throw new IllegalArgumentException("the component has no function " + function);
        }
        return line;
    }

    /**
     * Sets where the functions print, from the next text on. What a stream fails to take goes to the log file of the
     * runtime; the function that printed it runs on.
     *
     * @param stream the stream, or null for {@link Loomkit#output()}
     */
    public void setOutput(PrintStream stream) {
        streams.output = stream;
    }

    /**
     * Sets where errors and warnings go, from the next text on.
     *
     * @param stream the stream, or null for {@link Loomkit#errorOutput()}
     */
    public void setErrorOutput(PrintStream stream) {
        streams.errorOutput = stream;
    }

    /**
     * Whether the component was closed, by {@link #close} or with the runtime.
     *
     * @return true when it can't be called any more
     */
    public boolean isClosed() {
        return instance.isClosed();
    }

    /**
     * Ends the component; functions that run on other threads run to their end. Closing twice is harmless.
     *
     * @throws NVException when the runtime fails to end it
     */
    @Override
    public void close() {
        instance.close();
    }
}
