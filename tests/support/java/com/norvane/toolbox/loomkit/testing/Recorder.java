package com.norvane.toolbox.loomkit.testing;

import java.io.ByteArrayOutputStream;
import java.io.PrintStream;
import java.util.concurrent.Callable;

/** A print stream behind a Callable, with what was printed on it and the name of the last thread that asked. */
public final class Recorder implements Callable<Object> {
    private final ByteArrayOutputStream bytes = new ByteArrayOutputStream();
    private final PrintStream stream = new PrintStream(bytes, true);
    private volatile String threadName = "";

    @Override
    public Object call() {
        threadName = Thread.currentThread().getName();
        return stream;
    }

    public String text() {
        stream.flush();
        return bytes.toString();
    }

    public String threadName() {
        return threadName;
    }
}
