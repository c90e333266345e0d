package com.norvane.toolbox.loomkit.internal;

import java.io.IOException;
import java.io.UncheckedIOException;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.NoSuchFileException;
import java.nio.file.Path;
import java.nio.file.attribute.FileAttribute;
import java.nio.file.attribute.PosixFilePermission;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.ArrayDeque;
import java.util.ArrayList;
import java.util.Deque;
import java.util.Iterator;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.stream.Stream;

/**
 * Folders that code may be loaded from: nobody but the user of this process and root can change what is in them.
 *
 * <p>Such a folder and every folder on the way to it, up to the root, belong to one of the two and are closed to writing
 * by others; so are the links on the way theirs. Let through are folders on the way that everybody may write to, when
 * they are sticky, and writing by a group that is the user's own. The native half has the same rule for components;
 * access lists, which Java can't see, are looked at there alone.
 */
final class TrustedFolder {
    private static final FileAttribute<Set<PosixFilePermission>> PRIVATE_FOLDER =
            PosixFilePermissions.asFileAttribute(PosixFilePermissions.fromString("rwx------"));
    private static final int WRITABLE_BY_ALL = 0002;
    private static final int WRITABLE_BY_GROUP = 0020;
    private static final int STICKY = 01000;
    private static final int MOST_LINKS = 40;

    private TrustedFolder() {}

    /**
     * Refuses a folder that breaks the rule. What isn't there yet is not judged.
     *
     * @throws IOException that names the folder, the place that breaks the rule, its owner, and what mends it
     */
    static void require(Path folder) throws IOException {
        new Walk(folder).run();
    }

    /** Whether a folder and everything below it keep to the rule; no links are let through there. */
    static boolean isTrustedInside(Path folder) throws IOException {
        try (Stream<Path> below = Files.walk(folder)) {
            for (Iterator<Path> paths = below.iterator(); paths.hasNext(); ) {
                Item item = new Item(paths.next());
                if (item.isLink || !item.problem(false).isEmpty()) {
                    return false;
                }
            }
            return true;
        } catch (UncheckedIOException failure) {
            throw failure.getCause();
        }
    }

    /** Makes a folder and its parents where they are missing, each closed to all others whatever the umask. */
    static void create(Path folder) throws IOException {
        if (Files.isDirectory(folder)) {
            return;
        }
        if (folder.getParent() != null) {
            create(folder.getParent());
        }
        try {
            Files.createDirectory(folder, PRIVATE_FOLDER);
        } catch (FileAlreadyExistsException made) {
            if (!Files.isDirectory(folder)) {
                throw made;
            }
        }
    }

    /** The number of the user that this process runs as. */
    static int processUser() throws IOException {
        for (String line : Files.readAllLines(Path.of("/proc/self/status"))) {
            String[] fields = line.split("\\s+");
            if (fields[0].equals("Uid:")) {
                return Integer.parseUnsignedInt(fields[2]);
            }
        }
        throw new IOException("/proc/self/status does not tell the user of this process");
    }

    /**
     * Whether a group is the private one of the user: it has his name, and nobody else is in it. Only the tables of the
     * system itself count; a group from elsewhere might have members that nobody tells.
     */
    private static boolean isPrivateGroup(int group) throws IOException {
        String user = Integer.toUnsignedString(processUser());
        String number = Integer.toUnsignedString(group);
        String name = "";
        for (String line : Files.readAllLines(Path.of("/etc/passwd"))) {
            String[] account = line.split(":", -1);
            if (account.length < 4) {
                continue;
            }
            if (account[2].equals(user)) {
                name = name.isEmpty() ? account[0] : name;
            } else if (account[3].equals(number)) {
                return false;
            }
        }
        for (String line : Files.readAllLines(Path.of("/etc/group"))) {
            String[] fields = line.split(":", -1);
            if (fields.length == 4 && fields[0].equals(name) && fields[2].equals(number)) {
                return fields[3].isEmpty() || fields[3].equals(name);
            }
        }
        return false;
    }

    /** What stands under a path, a link itself included. */
    private static final class Item {
        final boolean isLink;
        final boolean isFolder;
        private final int owner;
        private final int group;
        private final int mode;
        private final String ownerName;

        Item(Path path) throws IOException {
            Map<String, Object> state = Files.readAttributes(path, "unix:*", LinkOption.NOFOLLOW_LINKS);
            isLink = (Boolean) state.get("isSymbolicLink");
            isFolder = (Boolean) state.get("isDirectory");
            owner = (Integer) state.get("uid");
            group = (Integer) state.get("gid");
            mode = (Integer) state.get("mode");
            String number = Integer.toUnsignedString(owner);
            String name = state.get("owner").toString();
            ownerName = name.equals(number) ? number : name + " (" + number + ")";
        }

        /** What breaks the rule, worded to follow the path; empty when nothing does. */
        String problem(boolean mayBeSticky) throws IOException {
            String belongs = "belongs to the user " + ownerName;
            if (owner != 0 && owner != processUser()) {
                return (isLink ? "is a link that " : "") + belongs + ", while this process runs as the user "
                        + Integer.toUnsignedString(processUser());
            }
            if (isLink || (mayBeSticky && (mode & STICKY) != 0)) {
                return "";
            }
            if ((mode & WRITABLE_BY_ALL) != 0) {
                return belongs + " and can be written by everybody; 'chmod o-w' mends that";
            }
            if ((mode & WRITABLE_BY_GROUP) != 0 && !isPrivateGroup(group)) {
                return belongs + " and can be written by others of its group " + Integer.toUnsignedString(group)
                        + "; 'chmod g-w' mends that";
            }
            return "";
        }
    }

    /** Goes from the root to a folder as the system would, one name after the other. */
    private static final class Walk {
        private final Path folder;
        private final Deque<Path> names = new ArrayDeque<>();
        private Path place;
        private int links;

        Walk(Path folder) throws IOException {
            this.folder = folder.toAbsolutePath();
            follow(this.folder);
        }

        void run() throws IOException {
            try {
                while (!names.isEmpty()) {
                    String name = names.removeFirst().toString();
                    if (name.equals("..")) {
                        place = place.getParent() == null ? place : place.getParent();
                    } else if (!name.equals(".") && !name.isEmpty()) {
                        enter(place.resolve(name));
                    }
                }
            } catch (NoSuchFileException missing) {
                names.clear();
            }
        }

        /** Puts the names of a path before those that are still to come. */
        private void follow(Path path) throws IOException {
            List<Path> parts = new ArrayList<>();
            path.forEach(parts::add);
            for (int i = parts.size() - 1; i >= 0; i--) {
                names.addFirst(parts.get(i));
            }
            if (path.isAbsolute()) {
                place = path.getRoot();
                judge(place);
            }
        }

        private void enter(Path next) throws IOException {
            if (!judge(next).isLink) {
                place = next;
            } else if (++links <= MOST_LINKS) {
                follow(Files.readSymbolicLink(next));
            } else {
                throw new IOException(next + " is a link that goes in a circle");
            }
        }

        private Item judge(Path path) throws IOException {
            Item item = new Item(path);
            String problem = item.isFolder || item.isLink ? item.problem(!names.isEmpty()) : "";
            if (!problem.isEmpty()) {
                throw new IOException("code isn't loaded from " + folder + ", since others could put some there: "
                        + path + " " + problem);
            }
            return item;
        }
    }
}
