package com.norvane.toolbox.loomkit;

import java.util.Objects;

/** Checks of names before they reach native code. */
final class Text {
    private Text() {}

    /**
     * @param what what the name names, for the message
     * @throws NullPointerException for null
     * @throws IllegalArgumentException for an empty name, one with a NUL, or one with half a surrogate pair
     */
    static String checkedName(String name, String what) {
        Objects.requireNonNull(name, what);
        if (name.isEmpty()) {
            throw new IllegalArgumentException("the " + what + " is empty");
        }
        boolean halfPair = name.codePoints().anyMatch(point -> point >= 0xD800 && point <= 0xDFFF);
        if (halfPair || name.indexOf('\0') >= 0) {
            throw new IllegalArgumentException("the " + what + " is not well-formed text");
        }
        return name;
    }
}
