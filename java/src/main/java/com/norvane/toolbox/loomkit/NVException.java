package com.norvane.toolbox.loomkit;

import java.io.IOException;
import java.io.InvalidObjectException;
import java.io.ObjectInputStream;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collections;
import java.util.List;
import java.util.Objects;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * A failure of the runtime or of a component function. Where functions were running, their stack stands in front of
 * the Java stack trace, innermost first.
 */
public class NVException extends RuntimeException {
    private static final long serialVersionUID = 1L;

    /** A function with its place, as the runtime writes it: {@code at function (file:line)}. */
    private static final Pattern FRAME = Pattern.compile("(?:at )?(.+?)(?: \\(([^()]*?)(?::(\\d+))?\\))?");

    /** In front of the line that carries the identifier; a line of a function begins otherwise. */
    private static final String IDENTIFIER = "identifier ";

    /** One line for each function that was running, innermost first. */
    private final ArrayList<String> nativeStack;

    /** What callers can tell failures apart by, empty where the function gave none. */
    private final String identifier;

    /** A failure without a message. Raised by native code. */
    public NVException() {
        this(null);
    }

    /**
     * A failure outside of any function.
     *
     * @param message what failed
     */
    public NVException(String message) {
        super(message);
        nativeStack = new ArrayList<>();
        identifier = "";
    }

    /**
     * A failure of a function. Raised by native code.
     *
     * @param message what failed
     * @param stackLines one line for each function that was running, innermost first; where the failure has an
     *     identifier, it stands in a line of its own, behind the word {@code identifier} and a space
     * @param count how many of the lines count
     * @throws IllegalArgumentException when there are not that many lines
     * @throws NullPointerException for no lines, or one of them being null
     */
    @SuppressWarnings("this-escape")  // to the methods of Throwable that read and set the stack trace
    public NVException(String message, String[] stackLines, int count) {
        super(message);
        nativeStack = new ArrayList<>(checked(stackLines, count));
        identifier = takeIdentifier(nativeStack);
        List<StackTraceElement> frames = new ArrayList<>();
        nativeStack.forEach(line -> frames.add(frameOf(line)));
        Collections.addAll(frames, getStackTrace());
        setStackTrace(frames.toArray(new StackTraceElement[0]));
    }

    /**
     * The component functions that were running, one line each, innermost first.
     *
     * @return an unmodifiable list, empty for a failure outside of any function
     */
    public List<String> getNativeStack() {
        return Collections.unmodifiableList(nativeStack);
    }

    /**
     * What callers can tell failures of functions apart by.
     *
     * @return such as {@code "solver:diverged"}; empty for a failure that was given none
     */
    public String getIdentifier() {
        return identifier;
    }

    private static String takeIdentifier(List<String> lines) {
        for (String line : lines) {
            if (line.startsWith(IDENTIFIER)) {
                lines.remove(line);
                return line.substring(IDENTIFIER.length());
            }
        }
        return "";
    }

    private static List<String> checked(String[] lines, int count) {
        Objects.requireNonNull(lines, "stackLines");
        if (count < 0 || count > lines.length) {
            throw new IllegalArgumentException("there are " + lines.length + " stack lines, not " + count);
        }
        List<String> counted = Arrays.asList(lines).subList(0, count);
        counted.forEach(line -> Objects.requireNonNull(line, "stack line"));
        return counted;
    }

    private static StackTraceElement frameOf(String line) {
        Matcher match = FRAME.matcher(line);
        if (!match.matches()) {
            return new StackTraceElement("native", line, null, -1);
        }
        int number = match.group(3) == null ? -1 : lineNumber(match.group(3));
        return new StackTraceElement("native", match.group(1), match.group(2), number);
    }

    private static int lineNumber(String digits) {
        return digits.length() > 9 ? -1 : Integer.parseInt(digits);
    }

    /**
     * Refuses what this class did not write.
     *
     * @param stream the stream
     * @throws IOException when it fails
     * @throws ClassNotFoundException when a class is missing
     */
    private void readObject(ObjectInputStream stream) throws IOException, ClassNotFoundException {
        stream.defaultReadObject();
        if (identifier == null || nativeStack == null || !nativeStack.stream().allMatch(String.class::isInstance)) {
            throw new InvalidObjectException("a failure without its native stack");
        }
    }

    /**
     * Never called for what this class wrote.
     *
     * @throws InvalidObjectException always
     */
    private void readObjectNoData() throws InvalidObjectException {
        throw new InvalidObjectException("a failure without its native stack");
    }
}
