package com.norvane.toolbox.loomkit.internal;

import java.math.BigInteger;
import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;

/** SHA-256 digests as 64 lower-case hexadecimal digits. */
public final class Sha256 {
    private final MessageDigest digest;

    /** A digest of no bytes yet. */
    public Sha256() {
        try {
            digest = MessageDigest.getInstance("SHA-256");
        } catch (NoSuchAlgorithmException missing) {
            throw new IllegalStateException("every Java platform has SHA-256", missing);
        }
    }

    /** Adds {@code count} bytes from {@code offset} on. */
    public void update(byte[] bytes, int offset, int count) {
        digest.update(bytes, offset, count);
    }

    /** The digest of all bytes so far. Ends the object's use. */
    public String hex() {
        return String.format("%064x", new BigInteger(1, digest.digest()));
    }

    public static String hexOf(byte[] bytes) {
        Sha256 whole = new Sha256();
        whole.update(bytes, 0, bytes.length);
        return whole.hex();
    }
}
