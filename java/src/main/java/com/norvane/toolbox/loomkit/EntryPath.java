package com.norvane.toolbox.loomkit;

/** Which paths an archive may have: those that stay below a folder and name the same file wherever it is unpacked. */
final class EntryPath {
    private static final int MAX_LENGTH = 1024;
    private static final int MAX_COMPONENT_LENGTH = 255;

    private EntryPath() {}

    /** What is wrong with a path, worded to follow "entry 'x': "; null when nothing is. */
    static String problemOf(String path) {
        if (path.isEmpty()) {
            return "its path is empty";
        }
        if (path.length() > MAX_LENGTH) {
            return "its path has more than " + MAX_LENGTH + " characters";
        }
        if (path.indexOf('\\') >= 0) {
            return "its path has a backslash";
        }
        if (path.indexOf(':') >= 0) {
            return "its path has a colon";
        }
        if (path.chars().anyMatch(c -> c < ' ' || c > '~')) {
            return "its path has a character that is not printable ASCII";
        }
        if (path.startsWith("/")) {
            return "its path is absolute";
        }
        for (String component : path.split("/", -1)) {
            if (component.isEmpty()) {
                return "its path has an empty component";
            }
            if (component.equals(".") || component.equals("..")) {
                return "its path has the component '" + component + "'";
            }
            if (component.length() > MAX_COMPONENT_LENGTH) {
                return "its path has a component of more than " + MAX_COMPONENT_LENGTH + " characters";
            }
        }
        return null;
    }
}
