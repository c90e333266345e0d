package com.norvane.toolbox.loomkit.internal;

/** Text from outside made fit for a terminal or a message, by the same rule as in native code. */
public final class Printable {
    /** Pairs of first and last code point of what a terminal would take for something else than a mark on the line. */
    private static final int[][] UNSAFE = {
        {0x00, 0x1F}, // C0 controls
        {0x7F, 0x9F}, // delete and C1 controls
        {0x61C, 0x61C}, // Arabic letter mark
        {0x200B, 0x200F}, // characters without width, direction marks
        {0x2028, 0x202E}, // separators of lines and paragraphs, embeddings and overrides of direction
        {0x2060, 0x206F}, // isolates and other invisible marks
        {0xD800, 0xDFFF}, // halves of surrogate pairs
        {0xFEFF, 0xFEFF}, // byte order mark
        {0xFFF9, 0xFFFB}, // annotations
        {0xE0000, 0xE007F}, // tags
    };

    private Printable() {}

    /** The text with escapes such as {@code \x1b} for what a terminal would obey and what breaks or reorders lines. */
    public static String text(String text) {
        return text(text, Integer.MAX_VALUE);
    }

    /** The same, cut where it comes to more than {@code longest} characters, with "..." behind it. */
    public static String text(String text, int longest) {
        StringBuilder out = new StringBuilder();
        int next = 0;
        while (next < text.length()) {
            int point = text.codePointAt(next);
            if (out.length() + Character.charCount(point) > longest) {
                return out.append("...").toString();
            }
            if (isUnsafe(point)) {
                out.append(escape(point));
            } else {
                out.appendCodePoint(point);
            }
            next += Character.charCount(point);
        }
        return out.toString();
    }

    private static boolean isUnsafe(int point) {
        for (int[] range : UNSAFE) {
            if (point >= range[0] && point <= range[1]) {
                return true;
            }
        }
        return false;
    }

    private static String escape(int point) {
        String form = point <= 0x7F ? "\\x%02x" : point <= 0xFFFF ? "\\u%04x" : "\\U%08x";
        return String.format(form, point);
    }
}
