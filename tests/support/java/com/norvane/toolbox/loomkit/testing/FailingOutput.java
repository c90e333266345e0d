package com.norvane.toolbox.loomkit.testing;

import java.io.OutputStream;
import java.io.PrintStream;
import java.util.concurrent.Callable;

/** Output that can't be had: no stream, or one that refuses to print. */
public final class FailingOutput implements Callable<Object> {
    private final boolean hasStream;

    /** With a stream, printing on it fails; without, asking for it does. */
    public FailingOutput(boolean hasStream) {
        this.hasStream = hasStream;
    }

    @Override
    public Object call() {
        if (!hasStream) {
            throw new IllegalStateException("there is no stream");
        }
        return new PrintStream(OutputStream.nullOutputStream()) {
            @Override
            public void print(String text) {
                throw new IllegalStateException("the stream refuses");
            }
        };
    }
}
