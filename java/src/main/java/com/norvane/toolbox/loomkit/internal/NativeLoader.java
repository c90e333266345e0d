package com.norvane.toolbox.loomkit.internal;

import java.io.File;
import java.io.IOException;
import java.nio.charset.Charset;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Set;

/**
 * Loads the native library, once for this class loader.
 *
 * <p>The folder in the system property {@code loomkit.native.dir} decides alone where it is set. Otherwise the folders
 * of {@code java.library.path} are tried in their order, then the libraries in the jar. Those are unpacked to the
 * user's cache, or where that can't be trusted or written, to a folder for this process alone.
 */
final class NativeLoader {
    static final String FOLDER_PROPERTY = "loomkit.native.dir";

    private static final String LIBRARY = "libloomkit.so";
    /** What {@link #LIBRARY} links, from its own folder whatever the environment says. */
    private static final List<String> SHARED = List.of("libkrt.so", "libnativevrl.so");

    private static final String JAR = "the jar's own libraries";

    private static boolean loaded;

    private NativeLoader() {}

    /**
     * @throws UnsatisfiedLinkError that tells each place that was tried, and why it was not good
     */
    static synchronized void load() {
        if (!loaded) {
            List<String> tried = new ArrayList<>();
            loaded = loadFrom(tried);
            if (!loaded) {
                throw new UnsatisfiedLinkError(
                        "the native library of loomkit could not be loaded. Tried:\n  "
                                + String.join("\n  ", tried)
                                + "\nThe option -D" + FOLDER_PROPERTY + "=FOLDER names the folder that holds it.");
            }
        }
    }

    private static boolean loadFrom(List<String> tried) {
        String folder = System.getProperty(FOLDER_PROPERTY);
        if (folder != null) {
            return loadFile(new File(folder, LIBRARY), FOLDER_PROPERTY, tried);
        }
        for (String entry : System.getProperty("java.library.path", "").split(File.pathSeparator)) {
            if (!entry.isEmpty() && loadFile(new File(entry, LIBRARY), "java.library.path", tried)) {
                return true;
            }
        }
        return loadFromJar(tried);
    }

    private static boolean loadFromJar(List<String> tried) {
        NativeBundle bundle = NativeBundle.ofThisPlatform();
        try {
            return loadUnpacked(bundle.unpack(), tried);
        } catch (NativeBundle.BadBundleException failure) {
            tried.add(JAR + ": " + failure.getMessage());
            return false;
        } catch (IOException failure) {
            tried.add(JAR + ": " + failure);
        }
        try {
            return loadUnpacked(bundle.unpackForThisProcess(), tried);
        } catch (IOException failure) {
            tried.add(JAR + ", in the folder for temporary files: " + failure);
            return false;
        }
    }

    private static boolean loadUnpacked(Path folder, List<String> tried) {
        return loadFile(folder.resolve(LIBRARY).toFile(), JAR, tried);
    }

    private static boolean loadFile(File library, String source, List<String> tried) {
        File absolute = library.getAbsoluteFile();
        if (!Files.isRegularFile(absolute.toPath())) {
            tried.add(source + ": " + absolute + " is not there");
            return false;
        }
        try {
            refuseMixture(absolute.toPath().getParent());
            System.load(absolute.getPath());
            return true;
        } catch (UnsatisfiedLinkError | IOException failure) {
            tried.add(source + ": " + failure.getMessage());
            return false;
        }
    }

    /**
     * The system's loader takes a library that is in the process for any other one of its name. So one that is there
     * already must be the one of the folder, byte for byte.
     */
    private static void refuseMixture(Path folder) throws IOException {
        for (String name : SHARED) {
            Path own = folder.resolve(name);
            for (Path mapped : mappedFiles(name)) {
                if (Files.exists(own) && !isSame(mapped, own)) {
                    throw new IOException("the process already has " + mapped + ", of another build than " + own);
                }
            }
        }
    }

    /** The files of a name in this process; where one is gone by now, its path says so at its end. */
    private static Set<Path> mappedFiles(String name) throws IOException {
        Set<Path> files = new LinkedHashSet<>();
        for (String line : Files.readAllLines(Path.of("/proc/self/maps"), StandardCharsets.ISO_8859_1)) {
            int start = line.indexOf('/');
            if (start >= 0 && line.substring(start).contains("/" + name)) {
                byte[] path = line.substring(start).getBytes(StandardCharsets.ISO_8859_1);
                files.add(Path.of(new String(path, Charset.defaultCharset())));
            }
        }
        return files;
    }

    private static boolean isSame(Path mapped, Path own) throws IOException {
        return Files.exists(mapped)
                && (Files.isSameFile(mapped, own)
                        || Arrays.equals(Files.readAllBytes(mapped), Files.readAllBytes(own)));
    }
}
