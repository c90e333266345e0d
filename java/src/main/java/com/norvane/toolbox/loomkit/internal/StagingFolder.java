package com.norvane.toolbox.loomkit.internal;

import java.io.IOException;
import java.nio.channels.FileChannel;
import java.nio.channels.OverlappingFileLockException;
import java.nio.file.DirectoryIteratorException;
import java.nio.file.DirectoryStream;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.nio.file.attribute.FileAttribute;
import java.nio.file.attribute.PosixFilePermission;
import java.nio.file.attribute.PosixFilePermissions;
import java.time.Instant;
import java.util.List;
import java.util.Set;

/**
 * A fresh folder of this process, closed to others, for files on their way. A file in it is locked while it is in use,
 * so that what a killed process left behind can be told from the folder of a living one, and swept.
 */
final class StagingFolder implements AutoCloseable {
    private static final String LOCK = "lock";
    private static final String FRESH = "new";
    private static final String REPLACED = "old";
    /** In the order of their removal: the lock goes after what it vouches for. */
    private static final List<String> ITEMS = List.of(FRESH, REPLACED, LOCK);

    private static final FileAttribute<Set<PosixFilePermission>> PRIVATE =
            PosixFilePermissions.asFileAttribute(PosixFilePermissions.fromString("rwx------"));

    private final Path path;
    private final FileChannel lock;

    private StagingFolder(Path path, FileChannel lock) {
        this.path = path;
        this.lock = lock;
    }

    /** Makes a folder in {@code parent} whose name starts with {@code prefix}. */
    static StagingFolder in(Path parent, String prefix) throws IOException {
        // Between making the folder and locking it, a sweep of another process can take it for an abandoned one.
        while (true) {
            Path path = Files.createTempDirectory(parent, prefix + processName() + "-", PRIVATE);
            FileChannel lock = lockIn(path);
            if (lock != null) {
                StagingFolder folder = new StagingFolder(path, lock);
                folder.prepare();
                return folder;
            }
        }
    }

    private void prepare() throws IOException {
        try {
            Files.createDirectory(fresh(), PRIVATE);
        } catch (IOException failure) {
            close();
            throw failure;
        }
    }

    /** Null when the folder went in the meantime. */
    private static FileChannel lockIn(Path path) throws IOException {
        FileChannel channel;
        try {
            channel = FileChannel.open(
                    path.resolve(LOCK), StandardOpenOption.CREATE_NEW, StandardOpenOption.WRITE);
        } catch (IOException failure) {
            if (!Files.exists(path)) {
                return null;
            }
            Files.delete(path);
            throw failure;
        }
        if (channel.tryLock() != null && Files.exists(path.resolve(LOCK))) {
            return channel;
        }
        channel.close();
        return null;
    }

    /** What is being made. */
    Path fresh() {
        return path.resolve(FRESH);
    }

    /** Where what it replaces can be moved to. */
    Path replaced() {
        return path.resolve(REPLACED);
    }

    /** Removes the folder, or leaves it to a later sweep: some file systems keep a file as long as it is loaded. */
    void removeOrLeave() {
        try {
            close();
        } catch (IOException busy) {
            return;
        }
    }

    /** Removes the folder with all that is in it. */
    @Override
    public void close() throws IOException {
        try (lock) {
            remove(path);
        }
    }

    /**
     * Removes the folders that killed processes of this user left: those with the names and the content of a folder of
     * this class, which nobody holds. What can't be removed stays.
     */
    static void sweep(Path parent, String prefix) {
        // The system drops a process's locks on a file when any of its channels to the file is closed, so the folders
        // of this process are not even looked at.
        String own = prefix + processName() + "-";
        try (DirectoryStream<Path> folders = Files.newDirectoryStream(parent, prefix + "*")) {
            for (Path folder : folders) {
                String name = folder.getFileName().toString();
                if (!name.startsWith(own) && name.substring(prefix.length()).matches("\\d+-\\d+-\\d+")) {
                    removeIfAbandoned(folder);
                }
            }
        } catch (IOException | DirectoryIteratorException unreadable) {
            return;
        }
    }

    private static void removeIfAbandoned(Path folder) {
        try {
            if (!isOurs(folder)) {
                return;
            }
            Path file = folder.resolve(LOCK);
            if (!Files.exists(file, LinkOption.NOFOLLOW_LINKS)) {
                Files.delete(folder);
                return;
            }
            try (FileChannel lock = FileChannel.open(file, StandardOpenOption.WRITE, LinkOption.NOFOLLOW_LINKS)) {
                if (lock.tryLock() != null) {
                    remove(folder);
                }
            }
        } catch (IOException | OverlappingFileLockException inUse) {
            return;
        }
    }

    private static boolean isOurs(Path folder) throws IOException {
        if (!Files.isDirectory(folder, LinkOption.NOFOLLOW_LINKS)
                || (Integer) Files.getAttribute(folder, "unix:uid") != TrustedFolder.processUser()) {
            return false;
        }
        try (DirectoryStream<Path> items = Files.newDirectoryStream(folder)) {
            for (Path item : items) {
                if (!ITEMS.contains(item.getFileName().toString())) {
                    return false;
                }
            }
        }
        return true;
    }

    private static void remove(Path folder) throws IOException {
        for (String item : ITEMS) {
            removeTree(folder.resolve(item));
        }
        Files.deleteIfExists(folder);
    }

    private static void removeTree(Path path) throws IOException {
        if (Files.isDirectory(path, LinkOption.NOFOLLOW_LINKS)) {
            try (DirectoryStream<Path> entries = Files.newDirectoryStream(path)) {
                for (Path entry : entries) {
                    removeTree(entry);
                }
            }
        }
        Files.deleteIfExists(path);
    }

    /** The number of the process and the time of its start, in ms: one of its own even where numbers are used again. */
    private static String processName() {
        ProcessHandle process = ProcessHandle.current();
        return process.pid() + "-" + process.info().startInstant().map(Instant::toEpochMilli).orElse(0L);
    }
}
