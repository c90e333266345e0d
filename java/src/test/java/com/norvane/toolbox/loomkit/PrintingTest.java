package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.*;

import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.PrintStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class PrintingTest {
    private final ByteArrayOutputStream text = new ByteArrayOutputStream();
    private final ByteArrayOutputStream errors = new ByteArrayOutputStream();
    private Component showcase;

    private static PrintStream into(ByteArrayOutputStream bytes) {
        return new PrintStream(bytes, true, StandardCharsets.UTF_8);
    }

    private static String of(ByteArrayOutputStream bytes) {
        return bytes.toString(StandardCharsets.UTF_8);
    }

    @BeforeEach
    void open() throws IOException {
        TestComponents.start();
        ComponentOptions options = new ComponentOptions().output(into(text)).errorOutput(into(errors));
        showcase = Component.open(TestComponents.archive("showcase"), options);
    }

    @AfterEach
    void close() {
        showcase.close();
        Loomkit.setOutput(null);
        Loomkit.setErrorOutput(null);
    }

    @Test
    void keepsTheLinesOfAThreadOfTheComponent() {
        showcase.call("say_from_thread", 0, "line", 3);

        assertEquals("line 0\nline 1\nline 2\n", of(text));
        assertTrue(of(errors).contains("line is done"), of(errors));
    }

    @Test
    void followsAChangeOfStreamsAtOnceAndKeepsComponentsApart() throws IOException {
        ByteArrayOutputStream later = new ByteArrayOutputStream();
        ByteArrayOutputStream shared = new ByteArrayOutputStream();
        Loomkit.setOutput(into(shared));
        try (Component second = TestComponents.open("showcase")) {
            second.setOutput(into(later));
            second.call("say", 0, "second");
            showcase.call("say", 0, "one");
        }
        showcase.setOutput(into(later));
        showcase.call("say", 0, "two");
        showcase.setOutput(null);
        showcase.call("say", 0, "three");

        assertEquals("one\n", of(text));
        assertEquals("second\ntwo\n", of(later));
        assertEquals("three\n", of(shared));
    }

    /** What a stream doesn't take goes to the log, with the reason; the function runs on. */
    @Test
    void logsWhatAFailingStreamDoesNotTake(@TempDir Path folder) throws IOException {
        Path log = folder.resolve("log.txt");
        Loomkit.start("-logfile", log.toString());
        showcase.setOutput(
                new PrintStream(text) {
                    @Override
                    public void print(String ignored) {
                        throw new IllegalStateException("full");
                    }
                });
        showcase.call("say", 0, "lost");
        showcase.setOutput(into(text));
        showcase.call("say", 0, "again");

        assertEquals("again\n", of(text));
        assertEquals(log.toString(), Loomkit.logFile());
        String logged = Files.readString(log);
        assertTrue(logged.contains("IllegalStateException: full") && logged.contains("lost\n"), logged);
    }
}
