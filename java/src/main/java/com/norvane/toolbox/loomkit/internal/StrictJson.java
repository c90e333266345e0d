package com.norvane.toolbox.loomkit.internal;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.charset.CharacterCodingException;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/**
 * Reads JSON as every reader would: what some take one way and others another is refused, namely a byte order mark, a
 * NUL character, an object with the same member twice, text that isn't well-formed, and numbers out of range.
 *
 * <p>Objects come as {@link LinkedHashMap} in the order of the text, arrays as {@link List}, text as {@link String},
 * {@code true} and {@code false} as {@link Boolean}, {@code null} as null. Numbers of up to 18 digits and nothing else
 * come as {@link Long}, all others, also those with a sign, as {@link Double}.
 */
public final class StrictJson {
    /** How many arrays and objects may lie in each other. */
    public static final int MAX_DEPTH = 200;

    private static final int LONG_DIGITS = 18;
    private static final int END = -1;

    private final String text;
    private int position;
    private int depth;

    private StrictJson(String text) {
        this.text = text;
    }

    /**
     * Reads one value that is the whole text.
     *
     * @param utf8 the text in UTF-8
     * @throws IOException that tells what is wrong, with line and column from 1 on where that helps
     */
    public static Object read(byte[] utf8) throws IOException {
        String text;
        try {
            text = StandardCharsets.UTF_8.newDecoder().decode(ByteBuffer.wrap(utf8)).toString();
        } catch (CharacterCodingException malformed) {
            throw ArchiveFailure.ofManifest("it is not text in UTF-8");
        }
        if (text.indexOf('\0') >= 0 || text.startsWith("\uFEFF")) {
            throw ArchiveFailure.ofManifest("it has a NUL character or a byte order mark");
        }
        StrictJson reader = new StrictJson(text);
        Object value = reader.value();
        if (reader.nextToken() != END) {
            throw reader.unexpected("the end of the text");
        }
        return value;
    }

    /** The kind of a value as errors name it. */
    public static String kindOf(Object value) {
        if (value instanceof Map) {
            return "object";
        }
        if (value instanceof List) {
            return "array";
        }
        if (value instanceof Number) {
            return "number";
        }
        return value == null ? "null" : value instanceof String ? "string" : "boolean";
    }

    private Object value() throws IOException {
        int next = nextToken();
        switch (next) {
            case '{':
                return object();
            case '[':
                return array();
            case '"':
                return string();
            case 't':
                return word("true", Boolean.TRUE);
            case 'f':
                return word("false", Boolean.FALSE);
            case 'n':
                return word("null", null);
            default:
                if (next == '-' || isDigit(next)) {
                    return number();
                }
                throw unexpected("a value");
        }
    }

    private Map<String, Object> object() throws IOException {
        enter();
        Map<String, Object> members = new LinkedHashMap<>();
        if (nextToken() != '}') {
            do {
                if (nextToken() != '"') {
                    throw unexpected("the name of a member");
                }
                String name = string();
                if (members.containsKey(name)) {
                    throw ArchiveFailure.ofManifest("the member '" + name + "' is there twice");
                }
                if (nextToken() != ':') {
                    throw unexpected("':'");
                }
                position++;
                members.put(name, value());
            } while (goesOn('}'));
        }
        leave();
        return members;
    }

    private List<Object> array() throws IOException {
        enter();
        List<Object> elements = new ArrayList<>();
        if (nextToken() != ']') {
            do {
                elements.add(value());
            } while (goesOn(']'));
        }
        leave();
        return elements;
    }

    private void enter() throws IOException {
        if (++depth > MAX_DEPTH) {
            throw problem("more than " + MAX_DEPTH + " arrays and objects lie in each other");
        }
        position++;
    }

    private void leave() {
        depth--;
        position++;
    }

    /** Takes a comma, or sees the end. */
    private boolean goesOn(char end) throws IOException {
        int next = nextToken();
        if (next == ',') {
            position++;
            return true;
        }
        if (next != end) {
            throw unexpected("',' or '" + end + "'");
        }
        return false;
    }

    private Object word(String word, Object value) throws IOException {
        if (!text.startsWith(word, position)) {
            throw unexpected("'" + word + "'");
        }
        position += word.length();
        return value;
    }

    private Number number() throws IOException {
        int start = position;
        skip('-');
        if (!skip('0')) {
            digits();
        }
        boolean whole = true;
        if (skip('.')) {
            whole = false;
            digits();
        }
        if (skip('e') || skip('E')) {
            whole = false;
            if (!skip('+')) {
                skip('-');
            }
            digits();
        }
        String number = text.substring(start, position);
        if (whole && number.charAt(0) != '-' && number.length() <= LONG_DIGITS) {
            return Long.valueOf(number);
        }
        Double value = Double.valueOf(number);
        if (value.isInfinite()) {
            position = start;
            throw problem("a number is out of range");
        }
        return value;
    }

    private void digits() throws IOException {
        if (!isDigit(peek())) {
            throw unexpected("a digit");
        }
        while (isDigit(peek())) {
            position++;
        }
    }

    private String string() throws IOException {
        StringBuilder out = new StringBuilder();
        position++;
        while (true) {
            int next = peek();
            if (next < ' ') {
                throw unexpected("a character of a string");
            }
            position++;
            if (next == '"') {
                return out.toString();
            }
            if (next == '\\') {
                appendEscaped(out);
            } else {
                out.append((char) next);
            }
        }
    }

    private void appendEscaped(StringBuilder out) throws IOException {
        int kind = peek();
        if (kind == 'u') {
            position++;
            appendUnit(out);
            return;
        }
        int simple = kind == END ? END : "\"\\/bfnrt".indexOf(kind);
        if (simple < 0) {
            throw unexpected("one of \"\\/bfnrtu");
        }
        out.append("\"\\/\b\f\n\r\t".charAt(simple));
        position++;
    }

    /** Appends an escaped UTF-16 unit, and the one that has to follow a first half of a pair. */
    private void appendUnit(StringBuilder out) throws IOException {
        char unit = unit();
        out.append(unit);
        if (Character.isHighSurrogate(unit)) {
            if (!text.startsWith("\\u", position)) {
                throw unexpected("the second half of a surrogate pair");
            }
            position += 2;
            char second = unit();
            out.append(second);
            if (!Character.isLowSurrogate(second)) {
                throw problem("a string has half a surrogate pair");
            }
        } else if (Character.isLowSurrogate(unit)) {
            throw problem("a string has half a surrogate pair");
        }
    }

    private char unit() throws IOException {
        final int hexadecimal = 16;
        int unit = 0;
        for (int i = 0; i < 4; i++) {
            int next = peek();
            int digit = next < 0x80 ? Character.digit(next, hexadecimal) : -1;
            if (digit < 0) {
                throw unexpected("a hexadecimal digit");
            }
            unit = unit * hexadecimal + digit;
            position++;
        }
        return (char) unit;
    }

    private boolean skip(char expected) {
        boolean there = peek() == expected;
        position += there ? 1 : 0;
        return there;
    }

    /** The next character that is no white space, which stays to be read. */
    private int nextToken() {
        while (peek() == ' ' || peek() == '\t' || peek() == '\n' || peek() == '\r') {
            position++;
        }
        return peek();
    }

    private int peek() {
        return position < text.length() ? text.charAt(position) : END;
    }

    private static boolean isDigit(int character) {
        return character >= '0' && character <= '9';
    }

    private IOException unexpected(String expected) {
        int next = peek();
        String found = next == END ? "the text ends" : "'" + text.substring(position, position + 1) + "' stands";
        return problem(found + " where " + expected + " should be");
    }

    private IOException problem(String what) {
        int line = 1 + (int) text.substring(0, position).chars().filter(c -> c == '\n').count();
        int column = position - text.lastIndexOf('\n', position - 1);
        return ArchiveFailure.ofManifest("parse error at line " + line + ", column " + column + ": " + what);
    }
}
