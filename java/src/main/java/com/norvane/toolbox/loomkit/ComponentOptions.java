package com.norvane.toolbox.loomkit;

import java.io.PrintStream;
import java.nio.file.Path;
import java.util.Locale;
import java.util.Objects;

/** How a component is opened. Each method changes this object and returns it. */
public final class ComponentOptions {
    private Path folder;
    private PrintStream output;
    private PrintStream errorOutput;
    private String expectedSha256;

    /** The defaults: unpacked in the component cache, printing to the streams of {@link Loomkit}. */
    public ComponentOptions() {}

    /**
     * Unpacks the archive in a folder of its own, not in the component cache.
     *
     * @param target the folder, which is made when it is not there
     * @return this object
     */
    public ComponentOptions extractTo(Path target) {
        folder = Objects.requireNonNull(target, "target");
        return this;
    }

    /**
     * Sets where the functions of the component print.
     *
     * @param stream the stream, or null for {@link Loomkit#output()}
     * @return this object
     */
    public ComponentOptions output(PrintStream stream) {
        output = stream;
        return this;
    }

    /**
     * Sets where errors and warnings of the component go.
     *
     * @param stream the stream, or null for {@link Loomkit#errorOutput()}
     * @return this object
     */
    public ComponentOptions errorOutput(PrintStream stream) {
        errorOutput = stream;
        return this;
    }

    /**
     * Refuses every archive but one, before anything of it is unpacked or run. The digests inside an archive tell
     * damage; this one, which came another way, tells that it is the archive that was meant.
     *
     * @param hex the SHA-256 of the whole archive file, 64 hexadecimal digits, as {@code kpa list} and
     *     {@link ComponentDescription#sha256} tell it
     * @return this object
     * @throws IllegalArgumentException for text of another form
     */
    public ComponentOptions expectSha256(String hex) {
        if (!Objects.requireNonNull(hex, "hex").matches("[0-9a-fA-F]{64}")) {
            throw new IllegalArgumentException("a SHA-256 has 64 hexadecimal digits, not '" + hex + "'");
        }
        expectedSha256 = hex.toLowerCase(Locale.ROOT);
        return this;
    }

    String expectedSha256() {
        return expectedSha256;
    }

    Path folder() {
        return folder;
    }

    PrintStream output() {
        return output;
    }

    PrintStream errorOutput() {
        return errorOutput;
    }
}
