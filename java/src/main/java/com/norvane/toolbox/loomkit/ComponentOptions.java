package com.norvane.toolbox.loomkit;

import java.io.PrintStream;
import java.nio.file.Path;
import java.util.Objects;

/** How a component is opened. Each method changes this object and returns it. */
public final class ComponentOptions {
    private Path folder;
    private PrintStream output;
    private PrintStream errorOutput;

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
