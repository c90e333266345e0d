package com.norvane.toolbox.loomkit.internal;

import java.io.File;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

/**
 * Loads the native library, once for this class loader.
 *
 * <p>The folder in the system property {@code loomkit.native.dir} decides alone where it is set. Otherwise the folders
 * of {@code java.library.path} are tried in their order, then the libraries in the jar.
 */
final class NativeLoader {
    static final String FOLDER_PROPERTY = "loomkit.native.dir";

    private static final String LIBRARY = "libloomkit.so";

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
                        "the native library of loomkit could not be loaded. Tried:\n  " + String.join("\n  ", tried));
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
        try {
            Path folder = NativeBundle.ofThisPlatform().unpack();
            return loadFile(folder.resolve(LIBRARY).toFile(), "the jar's own libraries", tried);
        } catch (IOException failure) {
            tried.add("the jar's own libraries: " + failure.getMessage());
            return false;
        }
    }

    private static boolean loadFile(File library, String source, List<String> tried) {
        File absolute = library.getAbsoluteFile();
        if (!Files.isRegularFile(absolute.toPath())) {
            tried.add(source + ": " + absolute + " is not there");
            return false;
        }
        try {
            System.load(absolute.getPath());
            return true;
        } catch (UnsatisfiedLinkError failure) {
            tried.add(source + ": " + failure.getMessage());
            return false;
        }
    }
}
