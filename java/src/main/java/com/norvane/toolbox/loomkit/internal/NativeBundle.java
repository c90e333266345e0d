package com.norvane.toolbox.loomkit.internal;

import java.io.IOException;
import java.io.InputStream;
import java.io.UncheckedIOException;
import java.math.BigInteger;
import java.nio.charset.StandardCharsets;
import java.nio.file.DirectoryStream;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.nio.file.attribute.PosixFileAttributes;
import java.nio.file.attribute.PosixFilePermission;
import java.nio.file.attribute.PosixFilePermissions;
import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;
import java.util.LinkedHashMap;
import java.util.Locale;
import java.util.Map;
import java.util.Set;
import java.util.function.Function;

/**
 * The native libraries that ride in the jar: a list of SHA-256 digests, one line {@code digest  file} each, and the
 * files beside it.
 *
 * <p>They are unpacked to a folder that belongs to the user alone and whose name is the digest of the list, and used
 * from there by later processes after their digests were compared. A folder appears whole, by a rename, or not at all.
 */
final class NativeBundle {
    private static final String LIST = "natives.sha256";
    private static final Set<PosixFilePermission> PRIVATE = PosixFilePermissions.fromString("rwx------");

    /** The bundle itself is at fault, so that no other folder would help. */
    static final class BadBundleException extends IOException {
        private static final long serialVersionUID = 1L;

        BadBundleException(String message) {
            super(message);
        }
    }

    private final Function<String, InputStream> resources;
    private final Path cache;

    /**
     * @param resources opens a file of the bundle by its name, giving null when there is none
     * @param cache the folder in which per-digest folders lie
     */
    NativeBundle(Function<String, InputStream> resources, Path cache) {
        this.resources = resources;
        this.cache = cache;
    }

    static NativeBundle ofThisPlatform() {
        String folder = "/natives/" + platform(System.getProperty("os.name"), System.getProperty("os.arch")) + "/";
        return new NativeBundle(name -> NativeBundle.class.getResourceAsStream(folder + name), defaultCache());
    }

    static String platform(String system, String processor) {
        String cpu = processor.equals("amd64") ? "x86_64" : processor;
        return system.toLowerCase(Locale.ROOT) + "-" + cpu;
    }

    private static Path defaultCache() {
        return Path.of(System.getProperty("user.home", ""), ".cache", "loomkit", "natives");
    }

    /**
     * Unpacks the libraries where that has not been done yet.
     *
     * @return the folder that holds them, each with its right digest
     * @throws IOException that says what is wrong with the bundle or the folder
     */
    Path unpack() throws IOException {
        byte[] list = read(LIST);
        Map<String, String> digests = parse(new String(list, StandardCharsets.UTF_8));
        if (!cache.isAbsolute()) {
            throw new IOException("the home folder is not known, user.home being "
                    + System.getProperty("user.home"));
        }
        Files.createDirectories(cache);
        Path target = cache.resolve(digestOf(list));
        if (Files.exists(target, LinkOption.NOFOLLOW_LINKS)) {
            if (isWhole(target, digests)) {
                return target;
            }
            discard(target);
        }
        Path fresh = Files.createTempDirectory(cache, ".unpacking-");
        try {
            unpackFiles(digests, fresh);
            publish(fresh, target, digests);
        } finally {
            deleteFolder(fresh);
        }
        return target;
    }

    /**
     * Unpacks the libraries to a new folder in that for temporary files, which goes when the process ends orderly.
     *
     * @return the folder, closed to others, whose files have their right digests
     * @throws IOException that says what is wrong with the bundle or the folder
     */
    Path unpackForThisProcess() throws IOException {
        Map<String, String> digests = parse(new String(read(LIST), StandardCharsets.UTF_8));
        Path fresh = Files.createTempDirectory("loomkit-natives-", PosixFilePermissions.asFileAttribute(PRIVATE));
        try {
            unpackFiles(digests, fresh);
            if (!hasFiles(fresh, digests)) {
                throw new IOException("the files in " + fresh + " were changed while they were written");
            }
        } catch (IOException | RuntimeException | Error failure) {
            deleteFolder(fresh);
            throw failure;
        }
        // Deleted in the opposite order: the folder last.
        fresh.toFile().deleteOnExit();
        digests.keySet().forEach(name -> fresh.resolve(name).toFile().deleteOnExit());
        return fresh;
    }

    private byte[] read(String name) throws IOException {
        try (InputStream stream = resources.apply(name)) {
            if (stream == null) {
                throw new BadBundleException("no " + name + " for this platform");
            }
            return stream.readAllBytes();
        }
    }

    private static Map<String, String> parse(String list) throws IOException {
        Map<String, String> digests = new LinkedHashMap<>();
        for (String line : list.split("\n")) {
            String[] parts = line.trim().split("\\s+");
            if (parts.length != 2 || !parts[1].matches("[A-Za-z0-9._-]+") || parts[1].startsWith(".")) {
                throw new BadBundleException("bad line in " + LIST + ": " + line);
            }
            digests.put(parts[1], parts[0]);
        }
        return digests;
    }

    private void unpackFiles(Map<String, String> digests, Path folder) throws IOException {
        for (Map.Entry<String, String> file : digests.entrySet()) {
            unpackFile(file.getKey(), file.getValue(), folder);
        }
    }

    private void unpackFile(String name, String digest, Path folder) throws IOException {
        byte[] content = read(name);
        if (!digestOf(content).equals(digest)) {
            throw new BadBundleException(name + " does not have the digest that " + LIST + " states");
        }
        Files.write(folder.resolve(name), content);
    }

    /** Another process may have been faster, and its folder is as good. */
    private static void publish(Path fresh, Path target, Map<String, String> digests) throws IOException {
        try {
            Files.move(fresh, target, StandardCopyOption.ATOMIC_MOVE);
        } catch (IOException failure) {
            if (!isWhole(target, digests)) {
                throw failure;
            }
        }
    }

    /** Whether a folder is the user's own, closed to others, and has every file with its digest. */
    private static boolean isWhole(Path folder, Map<String, String> digests) throws IOException {
        if (!Files.isDirectory(folder, LinkOption.NOFOLLOW_LINKS) || !isPrivate(folder)) {
            return false;
        }
        return hasFiles(folder, digests);
    }

    private static boolean hasFiles(Path folder, Map<String, String> digests) throws IOException {
        for (Map.Entry<String, String> file : digests.entrySet()) {
            Path path = folder.resolve(file.getKey());
            boolean regular = Files.isRegularFile(path, LinkOption.NOFOLLOW_LINKS);
            if (!regular || !digestOf(Files.readAllBytes(path)).equals(file.getValue())) {
                return false;
            }
        }
        return true;
    }

    private static boolean isPrivate(Path folder) throws IOException {
        PosixFileAttributes attributes =
                Files.readAttributes(folder, PosixFileAttributes.class, LinkOption.NOFOLLOW_LINKS);
        PosixFileAttributes parent = Files.readAttributes(folder.getParent(), PosixFileAttributes.class);
        return PRIVATE.containsAll(attributes.permissions()) && attributes.owner().equals(parent.owner());
    }

    /** Moved aside first, so that nobody takes it for whole while it goes. */
    private void discard(Path broken) throws IOException {
        Path aside = Files.createTempDirectory(cache, ".broken-");
        Files.move(broken, aside.resolve("was"), StandardCopyOption.ATOMIC_MOVE);
        deleteFolder(aside.resolve("was"));
        deleteFolder(aside);
    }

    private static void deleteFolder(Path folder) throws IOException {
        if (Files.isSymbolicLink(folder) || Files.isRegularFile(folder)) {
            Files.delete(folder);
        } else if (Files.exists(folder)) {
            try (DirectoryStream<Path> entries = Files.newDirectoryStream(folder)) {
                for (Path entry : entries) {
                    deleteFolder(entry);
                }
            }
            Files.delete(folder);
        }
    }

    static String digestOf(byte[] content) {
        try {
            byte[] digest = MessageDigest.getInstance("SHA-256").digest(content);
            return String.format("%064x", new BigInteger(1, digest));
        } catch (NoSuchAlgorithmException missing) {
            throw new UncheckedIOException(new IOException("this Java has no SHA-256", missing));
        }
    }
}
