package com.norvane.toolbox.loomkit.internal;

import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;
import java.nio.channels.SeekableByteChannel;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.nio.file.StandardOpenOption;
import java.nio.file.attribute.PosixFilePermission;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.LinkedHashMap;
import java.util.Locale;
import java.util.Map;
import java.util.Set;
import java.util.function.Function;

/**
 * The native libraries that ride in the jar: a list of SHA-256 digests, one line {@code digest  file} each, and the
 * files beside it.
 *
 * <p>They are unpacked to a folder that nobody else can write to and whose name is the digest of the list, and used
 * from there by later processes after their digests were compared. A folder appears whole, by a rename, or not at all.
 */
final class NativeBundle {
    private static final String LIST = "natives.sha256";
    private static final String STAGING_PREFIX = ".loomkit-unpacking-";
    private static final String TEMPORARY_PREFIX = "loomkit-natives-";
    private static final Set<PosixFilePermission> PRIVATE_FILE = PosixFilePermissions.fromString("rw-------");
    /** How often a folder that others change under way is looked at anew. */
    private static final int ATTEMPTS = 10;

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
        return new NativeBundle(name -> NativeBundle.class.getResourceAsStream(folder + name),
                cacheFolder(System.getenv("XDG_CACHE_HOME"), System.getProperty("user.home", "")));
    }

    static String platform(String system, String processor) {
        String cpu = processor.equals("amd64") ? "x86_64" : processor;
        return system.toLowerCase(Locale.ROOT) + "-" + cpu;
    }

    /** Where natives are kept, given {@code $XDG_CACHE_HOME}, which may be null, and the home folder. */
    static Path cacheFolder(String xdgCache, String home) {
        Path caches = xdgCache != null && xdgCache.startsWith("/") ? Path.of(xdgCache) : Path.of(home, ".cache");
        return caches.resolve("loomkit").resolve("natives");
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
        TrustedFolder.require(cache);
        TrustedFolder.create(cache);
        TrustedFolder.require(cache);
        StagingFolder.sweep(cache, STAGING_PREFIX);
        Path target = cache.resolve(Sha256.hexOf(list));
        for (int attempt = 0; !isWhole(target, digests); attempt++) {
            if (attempt == ATTEMPTS) {
                throw new IOException("others keep changing " + target);
            }
            try (StagingFolder staging = StagingFolder.in(cache, STAGING_PREFIX)) {
                unpackFiles(digests, staging.fresh());
                publish(staging, target, digests);
            }
        }
        return target;
    }

    /**
     * Unpacks the libraries to a new folder in that for temporary files, for as long as it takes to load them.
     *
     * @return the folder, closed to others, whose files have their right digests
     * @throws IOException that says what is wrong with the bundle or the folder
     */
    StagingFolder unpackForThisProcess() throws IOException {
        Map<String, String> digests = parse(new String(read(LIST), StandardCharsets.UTF_8));
        StagingFolder folder = temporaryFolder();
        try {
            unpackFiles(digests, folder.fresh());
            if (!isWhole(folder.fresh(), digests)) {
                throw new IOException("the files in " + folder.fresh() + " were changed while they were written");
            }
        } catch (IOException | RuntimeException | Error failure) {
            folder.close();
            throw failure;
        }
        return folder;
    }

    /** A new folder for libraries, closed to others, in that for temporary files; sweeps up what killed processes left. */
    static StagingFolder temporaryFolder() throws IOException {
        Path temporary = Path.of(System.getProperty("java.io.tmpdir")).toAbsolutePath();
        StagingFolder.sweep(temporary, TEMPORARY_PREFIX);
        StagingFolder folder = StagingFolder.in(temporary, TEMPORARY_PREFIX);
        try {
            TrustedFolder.require(folder.fresh());
        } catch (IOException | RuntimeException | Error failure) {
            folder.close();
            throw failure;
        }
        return folder;
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
            byte[] content = read(file.getKey());
            if (!Sha256.hexOf(content).equals(file.getValue())) {
                throw new BadBundleException(file.getKey() + " does not have the digest that " + LIST + " states");
            }
            write(folder.resolve(file.getKey()), content);
        }
    }

    private static void write(Path path, byte[] content) throws IOException {
        try (SeekableByteChannel channel = Files.newByteChannel(path,
                Set.of(StandardOpenOption.CREATE_NEW, StandardOpenOption.WRITE),
                PosixFilePermissions.asFileAttribute(PRIVATE_FILE))) {
            ByteBuffer bytes = ByteBuffer.wrap(content);
            while (bytes.hasRemaining()) {
                channel.write(bytes);
            }
        } catch (IOException failure) {
            // The words of the system alone don't say where.
            throw new IOException("can't write " + path + ": " + failure.getMessage(), failure);
        }
    }

    /** Another process may have been faster, and its folder is as good; whether it is so is looked at afterwards. */
    private static void publish(StagingFolder staging, Path target, Map<String, String> digests) throws IOException {
        if (Files.exists(target, LinkOption.NOFOLLOW_LINKS) && !isWhole(target, digests)) {
            Files.move(target, staging.replaced(), StandardCopyOption.ATOMIC_MOVE);
        }
        try {
            Files.move(staging.fresh(), target, StandardCopyOption.ATOMIC_MOVE);
        } catch (IOException failure) {
            if (!Files.exists(target, LinkOption.NOFOLLOW_LINKS)) {
                throw failure;
            }
        }
    }

    /** Whether nobody else can change a folder, and it has every file with its digest. */
    private static boolean isWhole(Path folder, Map<String, String> digests) throws IOException {
        if (!Files.isDirectory(folder, LinkOption.NOFOLLOW_LINKS) || !TrustedFolder.isTrustedInside(folder)) {
            return false;
        }
        for (Map.Entry<String, String> file : digests.entrySet()) {
            Path path = folder.resolve(file.getKey());
            boolean regular = Files.isRegularFile(path, LinkOption.NOFOLLOW_LINKS);
            if (!regular || !Sha256.hexOf(Files.readAllBytes(path)).equals(file.getValue())) {
                return false;
            }
        }
        return true;
    }
}
