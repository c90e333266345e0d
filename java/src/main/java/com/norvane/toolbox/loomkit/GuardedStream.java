package com.norvane.toolbox.loomkit;

import java.io.IOException;
import java.io.InputStream;

/**
 * Keeps native code from taking a stream at its word: it counts on what {@link InputStream#read(byte[])} gives, and
 * takes 0 for the end.
 */
final class GuardedStream extends InputStream {
    private final InputStream source;

    GuardedStream(InputStream source) {
        this.source = source;
    }

    @Override
    public int read() throws IOException {
        return source.read();
    }

    @Override
    public int read(byte[] target) throws IOException {
        int count = source.read(target);
        if (count < -1 || count > target.length) {
            throw new IOException("the stream claims to have read " + count + " of " + target.length + " bytes");
        }
        return count == 0 && target.length > 0 ? readOne(target) : count;
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
