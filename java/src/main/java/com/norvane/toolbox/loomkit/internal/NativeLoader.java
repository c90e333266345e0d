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
 * user's cache, or where that can't be trusted or written, to a folder that goes as soon as they are loaded.
 *
 * <p>A virtual machine gives a library to one class loader only. Every other one gets a copy, of which the file goes as
 * soon as it is loaded; the runtime below is shared by all.
 */
final class NativeLoader {
    static final String FOLDER_PROPERTY = "loomkit.native.dir";

    private static final String LIBRARY = "libloomkit.so";
    /** What {@link #LIBRARY} links, from its own folder whatever the environment says; each class loader has its own. */
    private static final String NATIVES = "libnativevrl.so";
    /** What both link. There is one in a process. */
    private static final String RUNTIME = "libkrt.so";
    /** The digest of the runtime in this process, whose file may be gone by the time that the next class loader comes. */
    private static final String RUNTIME_PROPERTY = "loomkit.runtime.sha256";

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
            return loadFolder(Path.of(folder), FOLDER_PROPERTY, tried);
        }
        for (String entry : System.getProperty("java.library.path", "").split(File.pathSeparator)) {
            if (!entry.isEmpty() && loadFolder(Path.of(entry), "java.library.path", tried)) {
                return true;
            }
        }
        return loadFromJar(tried);
    }

    private static boolean loadFromJar(List<String> tried) {
        NativeBundle bundle = NativeBundle.ofThisPlatform();
        try {
            return loadFolder(bundle.unpack(), JAR, tried);
        } catch (NativeBundle.BadBundleException failure) {
            tried.add(JAR + ": " + failure.getMessage());
            return false;
        } catch (IOException failure) {
            tried.add(JAR + ": " + failure);
        }
        try {
            StagingFolder folder = bundle.unpackForThisProcess();
            try {
                return loadFolder(folder.fresh(), JAR, tried);
            } finally {
                folder.removeOrLeave();
            }
        } catch (IOException failure) {
            tried.add(JAR + ", in the folder for temporary files: " + failure);
            return false;
        }
    }

    private static boolean loadFolder(Path place, String source, List<String> tried) {
        Path folder = place.toAbsolutePath();
        if (!Files.isRegularFile(folder.resolve(LIBRARY))) {
            tried.add(source + ": " + folder.resolve(LIBRARY) + " is not there");
            return false;
        }
        try {
            refuseMixture(folder);
            if (!isTaken(folder)) {
                try {
                    loadLibrary(folder);
                    return true;
                } catch (UnsatisfiedLinkError failure) {
                    // Another class loader may have been faster.
                    if (!isTaken(folder)) {
                        throw failure;
                    }
                }
            }
            loadCopy(folder);
            return true;
        } catch (UnsatisfiedLinkError | IOException failure) {
            tried.add(source + ": " + failure.getMessage());
            return false;
        }
    }

    private static void loadLibrary(Path folder) {
        try {
            System.load(folder.resolve(LIBRARY).toString());
        } catch (IllegalCallerException denied) {
            Module module = NativeLoader.class.getModule();
            UnsatisfiedLinkError refusal = new UnsatisfiedLinkError("this virtual machine lets no native code be loaded"
                    + " without the option --enable-native-access="
                    + (module.isNamed() ? module.getName() : "ALL-UNNAMED"));
            refusal.initCause(denied);
            throw refusal;
        }
        try {
            System.setProperty(RUNTIME_PROPERTY, Sha256.hexOf(Files.readAllBytes(folder.resolve(RUNTIME))));
        } catch (IOException missing) {
            // It is in the process already, or nobody can be told of it.
            return;
        }
    }

    private static void loadCopy(Path folder) throws IOException {
        StagingFolder copy = NativeBundle.temporaryFolder();
        try {
            for (String name : List.of(LIBRARY, NATIVES)) {
                Files.copy(folder.resolve(name), copy.fresh().resolve(name));
            }
            loadLibrary(copy.fresh());
        } finally {
            copy.removeOrLeave();
        }
    }

    /** Whether another class loader has the library of a folder. */
    private static boolean isTaken(Path folder) throws IOException {
        Path library = folder.resolve(LIBRARY);
        for (Path mapped : mappedFiles(LIBRARY)) {
            if (Files.exists(mapped) && Files.isSameFile(mapped, library)) {
                return true;
            }
        }
        return false;
    }

    /**
     * The system's loader takes a runtime that is in the process for any other one. So one that is there already must be
     * the one of the folder, byte for byte.
     */
    private static void refuseMixture(Path folder) throws IOException {
        Path own = folder.resolve(RUNTIME);
        for (Path mapped : mappedFiles(RUNTIME)) {
            if (Files.exists(own) && !isSame(mapped, own)) {
                throw new IOException("the process already has " + mapped + ", of another build than " + own);
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
        byte[] content = Files.readAllBytes(own);
        return Files.exists(mapped)
                ? Arrays.equals(Files.readAllBytes(mapped), content)
                : Sha256.hexOf(content).equals(System.getProperty(RUNTIME_PROPERTY));
    }
}
