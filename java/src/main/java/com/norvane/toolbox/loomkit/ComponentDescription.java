package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.Printable;
import java.util.List;
import java.util.Objects;
import java.util.OptionalInt;

/**
 * What a component archive says of itself, read without running anything of it: see {@link Component#describe}.
 * Immutable; two are equal when all that they tell is.
 */
public final class ComponentDescription {
    /** One function of a component. */
    public static final class Function {
        private final String name;
        private final String help;
        private final OptionalInt minimumInputs;
        private final OptionalInt maximumInputs;
        private final OptionalInt maximumOutputs;

        Function(String name, String help, OptionalInt minimumInputs, OptionalInt maximumInputs,
                OptionalInt maximumOutputs) {
            this.name = name;
            this.help = help;
            this.minimumInputs = minimumInputs;
            this.maximumInputs = maximumInputs;
            this.maximumOutputs = maximumOutputs;
        }

        /**
         * The name that callers use.
         *
         * @return ASCII letters, digits and underscores
         */
        public String name() {
            return name;
        }

        /**
         * What the function does.
         *
         * @return one line as the archive has it, maybe empty; what reorders text may be in it
         */
        public String help() {
            return help;
        }

        /**
         * The fewest inputs that the function takes.
         *
         * @return 0 to 65535, or empty when the archive doesn't state it
         */
        public OptionalInt minimumInputs() {
            return minimumInputs;
        }

        /**
         * The most inputs that the function takes.
         *
         * @return 0 to 65535, or empty when the archive doesn't state it
         */
        public OptionalInt maximumInputs() {
            return maximumInputs;
        }

        /**
         * The most outputs that the function gives.
         *
         * @return 0 to 65535, or empty when the archive doesn't state it
         */
        public OptionalInt maximumOutputs() {
            return maximumOutputs;
        }

        @Override
        public boolean equals(Object other) {
            return other instanceof Function && values().equals(((Function) other).values());
        }

        @Override
        public int hashCode() {
            return values().hashCode();
        }

        private List<Object> values() {
            return List.of(name, help, minimumInputs, maximumInputs, maximumOutputs);
        }

        /** The name and the help, on one line that is safe to print. */
        @Override
        public String toString() {
            return help.isEmpty() ? name : name + "  " + Printable.text(help);
        }
    }

    /** One file of an archive, whose content has the digest that the archive states. */
    public static final class File {
        private final String path;
        private final long size;
        private final String sha256;

        File(String path, long size, String sha256) {
            this.path = path;
            this.size = size;
            this.sha256 = sha256;
        }

        /**
         * The path in the archive.
         *
         * @return a relative path of printable ASCII with slashes, which never leads out of its folder
         */
        public String path() {
            return path;
        }

        /**
         * The size of the content.
         *
         * @return in bytes, unpacked
         */
        public long size() {
            return size;
        }

        /**
         * The SHA-256 of the content.
         *
         * @return 64 lower-case hexadecimal digits
         */
        public String sha256() {
            return sha256;
        }

        @Override
        public boolean equals(Object other) {
            return other instanceof File && path.equals(((File) other).path) && size == ((File) other).size
                    && sha256.equals(((File) other).sha256);
        }

        @Override
        public int hashCode() {
            return Objects.hash(path, size, sha256);
        }

        /** The size, the digest and the path, on one line. */
        @Override
        public String toString() {
            return size + "  " + sha256 + "  " + path;
        }
    }

    private final String name;
    private final String version;
    private final List<Function> functions;
    private final String sha256;
    private final List<File> files;

    ComponentDescription(String name, String version, List<Function> functions, String sha256, List<File> files) {
        this.name = name;
        this.version = version;
        this.functions = List.copyOf(functions);
        this.sha256 = sha256;
        this.files = List.copyOf(files);
    }

    /**
     * The name of the component.
     *
     * @return a letter, then ASCII letters, digits, underscores, dashes and dots
     */
    public String name() {
        return name;
    }

    /**
     * The version of the component.
     *
     * @return such as {@code 1.0.0}
     */
    public String version() {
        return version;
    }

    /**
     * The functions that can be called.
     *
     * @return an unmodifiable list in the order of the archive
     */
    public List<Function> functions() {
        return functions;
    }

    /**
     * The SHA-256 of the whole archive file, for {@link ComponentOptions#expectSha256}.
     *
     * @return 64 lower-case hexadecimal digits
     */
    public String sha256() {
        return sha256;
    }

    /**
     * The files of the archive but {@code component.json}, which describes them.
     *
     * @return an unmodifiable list in the order of the paths
     */
    public List<File> files() {
        return files;
    }

    @Override
    public boolean equals(Object other) {
        return other instanceof ComponentDescription && values().equals(((ComponentDescription) other).values());
    }

    @Override
    public int hashCode() {
        return values().hashCode();
    }

    private List<Object> values() {
        return List.of(name, version, functions, sha256, files);
    }

    /** All of it as lines of text that are safe to print: nothing of the archive in it controls a terminal. */
    @Override
    public String toString() {
        StringBuilder text = new StringBuilder();
        text.append(name).append(' ').append(version).append("\narchive sha256 ").append(sha256);
        text.append("\nfunctions:");
        functions.forEach(function -> text.append("\n  ").append(function));
        text.append("\nfiles:");
        files.forEach(file -> text.append("\n  ").append(file));
        return text.toString();
    }
}
