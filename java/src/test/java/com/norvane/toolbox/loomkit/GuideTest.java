package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.*;

import java.io.ByteArrayOutputStream;
import java.io.PrintStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Collectors;
import jdk.jshell.JShell;
import jdk.jshell.Snippet;
import jdk.jshell.SnippetEvent;
import jdk.jshell.SourceCodeAnalysis.CompletionInfo;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;

/** Runs the Java blocks of the user's guide as one program, and compares what it prints with what the guide says. */
class GuideTest {
    private static final String PRINT = "System.out.print";
    private static final String COMMENT = ";  // ";

    private final PrintStream systemOut = System.out;
    private final ByteArrayOutputStream printed = new ByteArrayOutputStream();
    private JShell shell;

    @BeforeEach
    void start() {
        TestComponents.start();
        System.setOut(new PrintStream(printed, true, StandardCharsets.UTF_8));
        shell = JShell.builder().executionEngine("local").build();
        shell.addToClasspath(System.getProperty("java.class.path"));
    }

    @AfterEach
    void stop() {
        shell.close();
        System.setOut(systemOut);
    }

    private void run(String block) {
        String rest = block;
        while (!rest.isBlank()) {
            CompletionInfo next = shell.sourceCodeAnalysis().analyzeCompletion(rest);
            assertTrue(next.completeness().isComplete(), rest);
            for (SnippetEvent event : shell.eval(next.source())) {
                String problems =
                        shell.diagnostics(event.snippet())
                                .map(problem -> problem.getMessage(null))
                                .collect(Collectors.joining("\n"));
                assertEquals(Snippet.Status.VALID, event.status(), next.source() + problems);
                assertEquals(null, event.exception(), next.source());
            }
            rest = next.remaining();
        }
    }

    @Test
    void printsWhatTheGuideSays() throws Exception {
        List<String> expected = new ArrayList<>();
        List<String> block = new ArrayList<>();
        String fence = "";
        String components = Path.of(System.getProperty("loomkit.test.components")).toString();
        for (String line : Files.readAllLines(Path.of(System.getProperty("loomkit.test.guide")))) {
            if (line.startsWith("```")) {
                boolean endOfJava = fence.equals("```java");
                if (endOfJava) {
                    run(String.join("\n", block).replace("build/release/components", components));
                }
                block.clear();
                fence = fence.isEmpty() ? line : "";
            } else if (fence.equals("```java")) {
                block.add(line);
                int comment = line.lastIndexOf(COMMENT);
                if (line.contains(PRINT) && comment >= 0) {
                    expected.add(line.substring(comment + COMMENT.length()));
                }
            } else if (fence.equals("```")) {
                expected.add(line);
            }
        }
        assertTrue(expected.size() > 20, "only " + expected.size() + " lines were expected");
        assertEquals(String.join("\n", expected), printed.toString(StandardCharsets.UTF_8).strip());
    }
}
