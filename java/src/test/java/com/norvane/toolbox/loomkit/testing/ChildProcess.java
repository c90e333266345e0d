package com.norvane.toolbox.loomkit.testing;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

/** A Java program in a process of its own, for what a process does once only. */
public final class ChildProcess {
    /** All that the program printed, errors included. */
    public final String output;

    public final int exitCode;

    private ChildProcess(String output, int exitCode) {
        this.output = output;
        this.exitCode = exitCode;
    }

    /** Runs the main class with the class path of this process, up to its end. */
    public static ChildProcess run(Class<?> main, List<String> virtualMachineOptions)
            throws IOException, InterruptedException {
        return run(List.of(), main, virtualMachineOptions);
    }

    /** As {@link #run}, with a limit on the memory that the process may map. */
    public static ChildProcess runWithin(int kilobytes, Class<?> main, List<String> virtualMachineOptions)
            throws IOException, InterruptedException {
        return run(
                List.of("sh", "-c", "ulimit -v " + kilobytes + " && exec \"$@\"", "sh"), main, virtualMachineOptions);
    }

    private static ChildProcess run(List<String> front, Class<?> main, List<String> virtualMachineOptions)
            throws IOException, InterruptedException {
        List<String> command = new ArrayList<>(front);
        command.add(Path.of(System.getProperty("java.home"), "bin", "java").toString());
        command.addAll(virtualMachineOptions);
        command.addAll(List.of("-cp", System.getProperty("java.class.path"), main.getName()));
        Process process = new ProcessBuilder(command).redirectErrorStream(true).start();
        String output = new String(process.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
        return new ChildProcess(output, process.waitFor());
    }
}
