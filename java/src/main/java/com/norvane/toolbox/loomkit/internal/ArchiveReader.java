package com.norvane.toolbox.loomkit.internal;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collections;
import java.util.List;
import java.util.zip.CRC32;
import java.util.zip.DataFormatException;
import java.util.zip.Inflater;

/**
 * The files of a component archive in memory, by the rules of the native reader: an archive that two zip readers could
 * take for two different ones is refused. Every byte belongs to one entry, the directory or the end record, the local
 * headers say what the directory says, and nothing is used that a plain zip of files does not need.
 *
 * <p>Paths may be anything, and an entry may stand there twice; both are for the caller to judge.
 */
public final class ArchiveReader {
    private static final int LOCAL_SIGNATURE = 0x04034B50;
    private static final int DIRECTORY_SIGNATURE = 0x02014B50;
    private static final int DESCRIPTOR_SIGNATURE = 0x08074B50;
    private static final int END_SIGNATURE = 0x06054B50;
    /** With its signature, without a comment. */
    private static final int END_RECORD_BYTES = 22;

    private static final int STORED = 0;
    private static final int DEFLATED = 8;
    /** The version of the format that knows all that archives use. */
    private static final int VERSION = 20;

    private static final int ENCRYPTED = 1;
    private static final int DEFLATE_EFFORT = 3 << 1;
    /** The local header has zeros, and a descriptor follows the content. */
    private static final int SIZES_FOLLOW = 1 << 3;
    private static final int UTF8 = 1 << 11;

    private static final int BLOCK_BYTES = 1 << 16;

    /** Takes content in pieces. */
    public interface Sink {
        /** Takes {@code count} bytes from {@code offset} on. */
        void add(byte[] bytes, int offset, int count);
    }

    /** One file of the archive. */
    public final class Entry {
        private final String path;
        private final int start;
        private final int packedSize;
        private final Header header;

        Entry(String path, int start, Header header) {
            this.path = path;
            this.start = start;
            this.packedSize = (int) header.get(Field.PACKED_SIZE);
            this.header = header;
        }

        /** As the archive states it, decoded as UTF-8. */
        public String path() {
            return path;
        }

        /** In bytes, unpacked, as the archive states it. */
        public long size() {
            return header.get(Field.SIZE);
        }

        /**
         * Unpacks the content, never more of it than the stated size.
         *
         * @throws IOException unless it has the stated size and checksum, and ends where the entry does
         */
        public void read(Sink sink) throws IOException {
            CheckedContent content = new CheckedContent(this, sink);
            if (header.get(Field.METHOD) == DEFLATED) {
                inflate(content);
            } else {
                content.add(archive, start, packedSize);
            }
            content.end(header.get(Field.CHECKSUM));
        }

        private void inflate(CheckedContent content) throws IOException {
            Inflater inflater = new Inflater(true);
            try {
                inflater.setInput(archive, start, packedSize);
                byte[] block = new byte[BLOCK_BYTES];
                for (int count = inflater.inflate(block); count != 0; count = inflater.inflate(block)) {
                    content.add(block, 0, count);
                }
                if (!inflater.finished()) {
                    throw ArchiveFailure.ofEntry(path, "its content is damaged: the packed bytes end early");
                }
                if (inflater.getRemaining() != 0) {
                    throw ArchiveFailure.ofEntry(path, "its content is damaged: bytes follow its end");
                }
            } catch (DataFormatException damage) {
                throw ArchiveFailure.ofEntry(path, "its content is damaged: " + damage.getMessage());
            } finally {
                inflater.end();
            }
        }
    }

    /** Hands content on while it fits the size that its entry states, and compares the whole at the end. */
    private static final class CheckedContent {
        private final Entry entry;
        private final Sink sink;
        private final CRC32 checksum = new CRC32();
        private long total;

        CheckedContent(Entry entry, Sink sink) {
            this.entry = entry;
            this.sink = sink;
        }

        void add(byte[] bytes, int offset, int count) throws IOException {
            if (count > entry.size() - total) {
                throw ArchiveFailure.ofEntry(
                        entry.path, "it has more than the " + entry.size() + " bytes that it states");
            }
            total += count;
            checksum.update(bytes, offset, count);
            sink.add(bytes, offset, count);
        }

        void end(long expectedChecksum) throws IOException {
            if (total != entry.size()) {
                throw ArchiveFailure.ofEntry(
                        entry.path, "it has " + total + " bytes, not the " + entry.size() + " that it states");
            }
            if (checksum.getValue() != expectedChecksum) {
                throw ArchiveFailure.ofEntry(
                        entry.path, "its content is damaged: it does not match its checksum");
            }
        }
    }

    /** What the directory and the local header of an entry both hold, in the order of the bytes. */
    private enum Field {
        VERSION("version", 2),
        FLAGS("flags", 2),
        METHOD("method", 2),
        TIME("time", 4),
        CHECKSUM("checksum", 4),
        PACKED_SIZE("packed size", 4),
        SIZE("size", 4);

        private final String words;
        private final int bytes;

        Field(String words, int bytes) {
            this.words = words;
            this.bytes = bytes;
        }
    }

    private static final class Header {
        private final long[] values = new long[Field.values().length];
        private int pathLength;
        private int extraLength;

        static Header take(Cursor from) throws IOException {
            Header header = new Header();
            for (Field field : Field.values()) {
                header.values[field.ordinal()] = from.number(field.bytes);
            }
            header.pathLength = from.take16();
            header.extraLength = from.take16();
            return header;
        }

        long get(Field field) {
            return values[field.ordinal()];
        }

        boolean has(int flag) {
            return (get(Field.FLAGS) & flag) != 0;
        }

        /** A copy with the checksum and the sizes as {@code from} has them, or zeros. */
        Header withSizes(Cursor from) throws IOException {
            Header copy = new Header();
            System.arraycopy(values, 0, copy.values, 0, values.length);
            for (Field field : List.of(Field.CHECKSUM, Field.PACKED_SIZE, Field.SIZE)) {
                copy.values[field.ordinal()] = from == null ? 0 : from.take32();
            }
            return copy;
        }

        void requireSame(String path, Header directory) throws IOException {
            for (Field field : Field.values()) {
                if (get(field) != directory.get(field)) {
                    throw ArchiveFailure.ofEntry(
                            path, "its local header states another " + field.words + " than the directory");
                }
            }
        }
    }

    /** Takes little-endian numbers and ranges off the front of a part of the archive. */
    private final class Cursor {
        private int position;
        private final int end;

        Cursor(int start, int end) {
            this.position = start;
            this.end = end;
        }

        int left() {
            return end - position;
        }

        /** The index of the first of the bytes that are taken. */
        int take(long count) throws IOException {
            if (count > left()) {
                throw ArchiveFailure.ofArchive(
                        "The archive is truncated or damaged: a record or a content runs past its end.");
            }
            int taken = position;
            position += (int) count;
            return taken;
        }

        long number(int bytes) throws IOException {
            int start = take(bytes);
            long value = 0;
            for (int i = bytes - 1; i >= 0; i--) {
                value = value << Byte.SIZE | archive[start + i] & 0xFF;
            }
            return value;
        }

        int take16() throws IOException {
            return (int) number(Short.BYTES);
        }

        long take32() throws IOException {
            return number(Integer.BYTES);
        }

        /** Takes a signature where it stands there. */
        boolean takes(int signature) throws IOException {
            if (left() < Integer.BYTES) {
                return false;
            }
            boolean there = (int) take32() == signature;
            position -= there ? 0 : Integer.BYTES;
            return there;
        }
    }

    /** One record of the directory. */
    private final class DirectoryRecord {
        private final Header header;
        private final int commentLength;
        private final int volume;
        private final long attributes;
        private final long offset;
        private final int pathStart;
        private final String path;

        DirectoryRecord(Cursor directory) throws IOException {
            if (!directory.takes(DIRECTORY_SIGNATURE)) {
                throw damaged("its directory has fewer entries than its end record states, or starts elsewhere");
            }
            directory.take16(); // made by: readers differ in what they take from it, so nothing is
            header = Header.take(directory);
            commentLength = directory.take16();
            volume = directory.take16();
            directory.take16(); // whether the content is text
            attributes = directory.take32();
            offset = directory.take32();
            pathStart = directory.take(header.pathLength);
            path = new String(archive, pathStart, header.pathLength, StandardCharsets.UTF_8);
            requireHarmless();
            requireHarmlessExtra(path, directory.take(header.extraLength), header.extraLength);
        }

        private void requireHarmless() throws IOException {
            String problem = kindProblem();
            if (problem == null) {
                problem = featureProblem();
            }
            if (problem != null) {
                throw ArchiveFailure.ofEntry(path, problem);
            }
        }

        /**
         * The attributes may be those of Unix in their upper half, of DOS in their lower; either may tell of something
         * else than a file, whichever system the archive says that it comes from.
         */
        private String kindProblem() {
            final int dosVolume = 0x08;
            final int dosFolder = 0x10;
            final int folder = 0040000;
            final int file = 0100000;
            final int link = 0120000;
            int type = (int) (attributes >> 16) & 0170000;
            if (type == folder || (attributes & dosFolder) != 0 || path.endsWith("/")) {
                return "it is a folder; only files are allowed";
            }
            if (type == link) {
                return "it is a link; only files are allowed";
            }
            if ((type != 0 && type != file) || (attributes & dosVolume) != 0) {
                return "it is a device, pipe or socket; only files are allowed";
            }
            return null;
        }

        private String featureProblem() {
            long method = header.get(Field.METHOD);
            if (header.has(ENCRYPTED)) {
                return "it is encrypted";
            }
            if (header.has(~(DEFLATE_EFFORT | SIZES_FOLLOW | UTF8)) || header.get(Field.VERSION) > VERSION) {
                return "it uses features of zip files that archives do not: version " + header.get(Field.VERSION)
                        + ", flags " + header.get(Field.FLAGS);
            }
            if (method != STORED && method != DEFLATED) {
                return "its method is " + method + "; only 0 (stored) and 8 (deflated) are allowed";
            }
            if (method == STORED && header.has(SIZES_FOLLOW)) {
                return "it is stored with its size behind it";
            }
            if (method == STORED && header.get(Field.PACKED_SIZE) != header.get(Field.SIZE)) {
                return "it has " + header.get(Field.PACKED_SIZE) + " stored bytes, not the "
                        + header.get(Field.SIZE) + " that it states";
            }
            return commentLength != 0 || volume != 0 ? "it has a comment or lies in another volume" : null;
        }

        /** Takes the entry off the front: its local header, its content and what tells its sizes behind it. */
        Entry takeEntry(Cursor contents) throws IOException {
            if (offset != contents.position) {
                throw ArchiveFailure.ofEntry(path, "it does not begin where the entry before it ends");
            }
            if (!contents.takes(LOCAL_SIGNATURE)) {
                throw ArchiveFailure.ofEntry(path, "it has no local header where the directory says");
            }
            Header local = Header.take(contents);
            requireSamePath(contents.take(local.pathLength), local.pathLength);
            requireHarmlessExtra(path, contents.take(local.extraLength), local.extraLength);
            boolean sizesFollow = header.has(SIZES_FOLLOW);
            local.requireSame(path, sizesFollow ? header.withSizes(null) : header);
            int start = contents.take(header.get(Field.PACKED_SIZE));
            if (sizesFollow) {
                if (!contents.takes(DESCRIPTOR_SIGNATURE)) {
                    throw ArchiveFailure.ofEntry(path, "its sizes do not follow its content");
                }
                header.withSizes(contents).requireSame(path, header);
            }
            return new Entry(path, start, header);
        }

        private void requireSamePath(int start, int length) throws IOException {
            if (!Arrays.equals(
                    archive, start, start + length, archive, pathStart, pathStart + header.pathLength)) {
                String local = new String(archive, start, length, StandardCharsets.UTF_8);
                throw ArchiveFailure.ofEntry(path, "its local header names it '" + local + "'");
            }
        }
    }

    private final byte[] archive;

    private ArchiveReader(byte[] archive) {
        this.archive = archive;
    }

    /**
     * Reads the directory and the local headers; contents are not looked at.
     *
     * @param archive the bytes, which the entries keep
     * @param maxEntries how many entries are allowed
     * @return the entries in their order, unmodifiable
     * @throws IOException that names the entry and what is wrong with it
     */
    public static List<Entry> read(byte[] archive, int maxEntries) throws IOException {
        return new ArchiveReader(archive).readEntries(maxEntries);
    }

    private static IOException damaged(String how) {
        return ArchiveFailure.ofArchive("The archive is truncated or damaged: " + how + ".");
    }

    private List<Entry> readEntries(int maxEntries) throws IOException {
        if (archive.length == 0) {
            throw ArchiveFailure.ofArchive("The archive is empty.");
        }
        if (archive.length < 2 || archive[0] != 'P' || archive[1] != 'K') {
            throw ArchiveFailure.ofArchive("The archive is not a zip file.");
        }
        int endRecord = Math.max(0, archive.length - END_RECORD_BYTES);
        Cursor end = new Cursor(endRecord, archive.length);
        int count = takeCount(end);
        long size = end.take32();
        long offset = end.take32();
        if (end.take16() != 0) {
            throw damaged("its end record states several volumes or a comment");
        }
        if (offset + size != endRecord) {
            throw damaged("its end record does not follow the directory that it states");
        }
        if (count > maxEntries) {
            throw ArchiveFailure.ofArchive(
                    "The archive has more than the " + maxEntries + " entries that are allowed.");
        }
        return readEntries(count, new Cursor((int) offset, endRecord), new Cursor(0, (int) offset));
    }

    private int takeCount(Cursor end) throws IOException {
        if (!end.takes(END_SIGNATURE)) {
            throw damaged("it does not end with the end record of a zip file");
        }
        int volumes = end.take16() + end.take16();
        int countHere = end.take16();
        int count = end.take16();
        if (volumes != 0 || countHere != count) {
            throw damaged("its end record states several volumes or a comment");
        }
        return count;
    }

    private List<Entry> readEntries(int count, Cursor directory, Cursor contents) throws IOException {
        List<Entry> entries = new ArrayList<>();
        for (int number = 0; number < count; number++) {
            entries.add(new DirectoryRecord(directory).takeEntry(contents));
        }
        if (contents.left() != 0 || directory.left() != 0) {
            throw damaged("it has bytes that belong to no entry");
        }
        return Collections.unmodifiableList(entries);
    }

    /** Extra fields may tell times and owners, which are not used. Others can name another file or other sizes. */
    private void requireHarmlessExtra(String path, int start, int length) throws IOException {
        final int times = 0x5455;
        final int owners = 0x7875;
        final int headBytes = 4;
        Cursor fields = new Cursor(start, start + length);
        while (fields.left() != 0) {
            int kind = fields.left() < headBytes ? 0 : fields.take16();
            int fieldLength = kind == 0 ? 0 : fields.take16();
            if ((kind != times && kind != owners) || fieldLength > fields.left()) {
                throw ArchiveFailure.ofEntry(path, "it has an extra field that is not allowed or not whole");
            }
            fields.take(fieldLength);
        }
    }
}
