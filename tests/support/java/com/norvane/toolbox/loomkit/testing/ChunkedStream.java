package com.norvane.toolbox.loomkit.testing;

import java.io.IOException;
import java.io.InputStream;

/** Bytes that come in pieces of a given size at most, and break off with an exception if wanted. */
public final class ChunkedStream extends InputStream {
    private final byte[] bytes;
    private final int chunk;
    private final int breaksAt;
    private int position;
    private int reads;

    /** Reading at position {@code breaksAt} fails; -1 for never. */
    public ChunkedStream(byte[] bytes, int chunk, int breaksAt) {
        this.bytes = bytes.clone();
        this.chunk = chunk;
        this.breaksAt = breaksAt;
    }

    @Override
    public int read() {
        throw new UnsupportedOperationException("bytes are read in pieces");
    }

    @Override
    public int read(byte[] target) throws IOException {
        reads++;
        if (breaksAt >= 0 && position >= breaksAt) {
            throw new IOException("the stream broke");
        }
        int count = Math.min(Math.min(chunk, target.length), bytes.length - position);
        if (count <= 0) {
            return -1;
        }
        System.arraycopy(bytes, position, target, 0, count);
        position += count;
        return count;
    }

    /** How often a piece was asked for. */
    public int reads() {
        return reads;
    }
}
