package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.ArchiveFailure;
import com.norvane.toolbox.loomkit.internal.StrictJson;
import java.io.IOException;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Map;
import java.util.OptionalInt;
import java.util.Set;
import java.util.TreeMap;

/**
 * What {@code component.json} says, by the rules of the native reader. Members that are not known are skipped, so that
 * a later packer can add some.
 */
final class Manifest {
    private static final int MAX_COUNT = 65535;
    private static final String WORD_END = "{0,127}";

    final String name;
    final String version;
    final List<ComponentDescription.Function> functions;
    /** From a platform to the path of its library. */
    final Map<String, String> libraries;
    /** From the path of each entry but this one to its SHA-256. */
    final Map<String, String> digests;

    /**
     * @param utf8 the entry's content
     * @throws IOException that tells where the JSON is bad, or which member is missing or of a wrong form
     */
    Manifest(byte[] utf8) throws IOException {
        Object json = StrictJson.read(utf8);
        if (!(json instanceof Map)) {
            throw ArchiveFailure.ofManifest("the top must be an object, not " + StrictJson.kindOf(json));
        }
        Place top = new Place((Map<?, ?>) json, "");
        name = top.word("name", "[A-Za-z][A-Za-z0-9_.-]",
                "a letter followed by letters, digits, '_', '-' or '.'");
        version = top.word("version", "[A-Za-z0-9][A-Za-z0-9+.-]", "made of letters, digits, '+', '-' and '.'");
        top.wholeNumber("abi");
        functions = readFunctions(top.list("functions"));
        libraries = readLibraries(top.inside("libraries"));
        digests = readDigests(top.inside("sha256"));
    }

    /** An object of the manifest, with the words that follow the name of a member of it: "", " of functions[2]". */
    private static final class Place {
        private final Map<?, ?> object;
        private final String within;

        Place(Map<?, ?> object, String within) {
            this.object = object;
            this.within = within;
        }

        private IOException bad(String member, String problem) {
            return ArchiveFailure.ofManifest("the member '" + member + "'" + within + " " + problem);
        }

        private Object member(String member) throws IOException {
            if (!object.containsKey(member)) {
                throw bad(member, "is missing");
            }
            return object.get(member);
        }

        private <T> T typed(String member, Class<T> type, String typeWords) throws IOException {
            Object value = member(member);
            if (!type.isInstance(value)) {
                throw bad(member, "must be " + typeWords + ", not " + StrictJson.kindOf(value));
            }
            return type.cast(value);
        }

        String text(String member) throws IOException {
            return typed(member, String.class, "a string");
        }

        List<?> list(String member) throws IOException {
            return typed(member, List.class, "an array");
        }

        Place inside(String member) throws IOException {
            return new Place(typed(member, Map.class, "an object"), " of '" + member + "'");
        }

        /** Text of the first and further characters of a pattern, 128 at most. */
        String word(String member, String characters, String form) throws IOException {
            String text = text(member);
            if (!text.matches(characters + WORD_END)) {
                throw bad(member, "must be " + form + ", not '" + text + "'");
            }
            return text;
        }

        int wholeNumber(String member) throws IOException {
            Object value = member(member);
            if (!(value instanceof Long) || (Long) value > MAX_COUNT) {
                boolean plain = value instanceof Number || value instanceof Boolean;
                throw bad(member, "must be a whole number from 0 to " + MAX_COUNT + ", not "
                        + (plain ? value.toString() : StrictJson.kindOf(value)));
            }
            return ((Long) value).intValue();
        }

        OptionalInt count(String member) throws IOException {
            return object.containsKey(member) ? OptionalInt.of(wholeNumber(member)) : OptionalInt.empty();
        }
    }

    private static List<ComponentDescription.Function> readFunctions(List<?> items) throws IOException {
        List<ComponentDescription.Function> functions = new ArrayList<>();
        Set<String> names = new HashSet<>();
        for (Object item : items) {
            String where = "functions[" + functions.size() + "]";
            if (!(item instanceof Map)) {
                throw ArchiveFailure.ofManifest(where + " must be an object, not " + StrictJson.kindOf(item));
            }
            ComponentDescription.Function function = readFunction(new Place((Map<?, ?>) item, " of " + where));
            functions.add(function);
            if (!names.add(function.name())) {
                throw ArchiveFailure.ofManifest("the function '" + function.name() + "' is there twice");
            }
        }
        return functions;
    }

    private static ComponentDescription.Function readFunction(Place place) throws IOException {
        String name = place.word("name", "[A-Za-z][A-Za-z0-9_]", "a letter followed by letters, digits or '_'");
        place.word("symbol", "[A-Za-z_][A-Za-z0-9_]", "the name of a C function");
        String help = place.text("help");
        if (help.chars().anyMatch(c -> c < ' ' || c == 0x7F)) {
            throw place.bad("help", "must be one line of text");
        }
        OptionalInt minimumInputs = place.count("minimumInputs");
        OptionalInt maximumInputs = place.count("maximumInputs");
        OptionalInt maximumOutputs = place.count("maximumOutputs");
        if (minimumInputs.orElse(0) > maximumInputs.orElse(MAX_COUNT)) {
            throw place.bad("minimumInputs", "must not be greater than 'maximumInputs'");
        }
        return new ComponentDescription.Function(name, help, minimumInputs, maximumInputs, maximumOutputs);
    }

    private static Map<String, String> readLibraries(Place inside) throws IOException {
        Map<String, String> libraries = new TreeMap<>();
        for (Object key : inside.object.keySet()) {
            String platform = (String) key;
            if (!platform.matches("[A-Za-z][A-Za-z0-9]" + WORD_END + "-[A-Za-z0-9][A-Za-z0-9_]" + WORD_END)) {
                throw ArchiveFailure.ofManifest("the platform '" + platform
                        + "' of 'libraries' must have the form system-architecture, such as linux-x86_64");
            }
            libraries.put(platform, checkedPath("libraries", inside.text(platform)));
        }
        return libraries;
    }

    private static Map<String, String> readDigests(Place inside) throws IOException {
        Map<String, String> digests = new TreeMap<>();
        for (Object key : inside.object.keySet()) {
            String path = checkedPath("sha256", (String) key);
            String digest = inside.text(path);
            if (!digest.matches("[0-9a-f]{64}")) {
                throw inside.bad(path, "must be 64 lower-case hexadecimal digits");
            }
            digests.put(path, digest);
        }
        return digests;
    }

    private static String checkedPath(String member, String path) throws IOException {
        String problem = EntryPath.problemOf(path);
        if (problem != null) {
            throw ArchiveFailure.ofManifest("the member '" + member + "' names '" + path + "': " + problem);
        }
        return path;
    }
}
