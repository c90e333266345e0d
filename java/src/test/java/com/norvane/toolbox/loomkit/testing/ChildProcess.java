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

    /** Runs the main class with the class path, natives and test components of this process, up to its end. */
    public static ChildProcess run(Class<?> main, List<String> virtualMachineOptions)
            throws IOException, InterruptedException {
        return run(builder(main, asHere(virtualMachineOptions)));
    }

    /** As {@link #run}, with a limit on the memory that the process may map. */
    public static ChildProcess runWithin(int kilobytes, Class<?> main, List<String> virtualMachineOptions)
            throws IOException, InterruptedException {
        return run(after("ulimit -v " + kilobytes, builder(main, asHere(virtualMachineOptions))));
    }

    private static List<String> asHere(List<String> options) {
        List<String> all = new ArrayList<>(options);
        for (String property : List.of("loomkit.native.dir", "loomkit.test.components")) {
            all.add("-D" + property + "=" + System.getProperty(property));
        }
        return all;
    }

    /** Runs a program up to its end. */
    public static ChildProcess run(ProcessBuilder program) throws IOException, InterruptedException {
        Process process = program.redirectErrorStream(true).start();
        String output = new String(process.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
        return new ChildProcess(output, process.waitFor());
    }

    /** What runs the main class with the class path of this process, for changes of the environment. */
    public static ProcessBuilder builder(Class<?> main, List<String> virtualMachineOptions) {
        List<String> command = new ArrayList<>();
        command.add(Path.of(System.getProperty("java.home"), "bin", "java").toString());
        command.addAll(virtualMachineOptions);
        command.addAll(List.of("-cp", System.getProperty("java.class.path"), main.getName()));
        return new ProcessBuilder(command);
    }

    /** The same program, started by a shell that runs a command before. */
    public static ProcessBuilder after(String shellCommand, ProcessBuilder program) {
        List<String> command = new ArrayList<>(List.of("sh", "-c", shellCommand + " && exec \"$@\"", "sh"));
        command.addAll(program.command());
        return program.command(command);
    }
}
