package com.norvane.toolbox.loomkit.testing;

/** An object whose text is long at first and then short, as data that changes while it is converted. */
public final class ShrinkingText {
    private boolean wasAsked;

    @Override
    public String toString() {
        String text = wasAsked ? "a" : "x".repeat(1000);
        wasAsked = true;
        return text;
    }
}
