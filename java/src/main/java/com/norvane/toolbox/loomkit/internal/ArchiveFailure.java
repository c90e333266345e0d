package com.norvane.toolbox.loomkit.internal;

import java.io.IOException;

/** How a bad archive is refused: one sentence, in which nothing of the archive can harm a terminal. */
public final class ArchiveFailure {
    /** How many characters of a text of the archive go into a message. */
    private static final int LONGEST_QUOTE = 400;

    private ArchiveFailure() {}

    /** To be thrown for an archive as a whole, with a sentence and its full stop. */
    public static IOException ofArchive(String sentence) {
        return new IOException(Printable.text(sentence, 2 * LONGEST_QUOTE));
    }

    /** To be thrown for one entry, with what follows "Archive entry 'path': " and no full stop. */
    public static IOException ofEntry(String path, String problem) {
        return ofArchive("Archive entry '" + Printable.text(path, LONGEST_QUOTE) + "': " + problem + ".");
    }

    /** To be thrown for {@code component.json}, with what follows "component.json: " and no full stop. */
    public static IOException ofManifest(String problem) {
        return ofArchive("component.json: " + Printable.text(problem, LONGEST_QUOTE) + ".");
    }
}
