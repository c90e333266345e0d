package com.norvane.toolbox.loomkit;

import java.io.IOException;
import java.io.InputStream;

/**
 * Keeps native code from taking a stream at its word: it counts on what {@link InputStream#read(byte[])} gives, and
 * takes 0 for the end. It also knows how much there was, since native code says only that it was too little.
 */
final class GuardedStream extends InputStream {
    private final InputStream source;
    private long count;
    private boolean isAtEnd;

    GuardedStream(InputStream source) {
        this.source = source;
    }

    @Override
    public int read() throws IOException {
        return source.read();
    }

    @Override
    public int read(byte[] target) throws IOException {
        int claimed = source.read(target);
        if (claimed < -1 || claimed > target.length) {
            throw new IOException("the stream claims to have read " + claimed + " of " + target.length + " bytes");
        }
        int given = claimed == 0 && target.length > 0 ? readOne(target) : claimed;
        isAtEnd = given < 0;
        count += Math.max(given, 0);
        return given;
    }

    /** Whether the source ended before this many bytes. */
    boolean endedBefore(long length) {
        return isAtEnd && count < length;
    }

    /** How many bytes the source has given. */
    long count() {
        return count;
    }

    private int readOne(byte[] target) throws IOException {
        int value = source.read();
        if (value < 0) {
            return -1;
        }
        target[0] = (byte) value;
        return 1;
    }
}
