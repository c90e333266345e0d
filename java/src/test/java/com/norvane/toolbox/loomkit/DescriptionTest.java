package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.*;

import com.norvane.toolbox.loomkit.internal.Sha256;
import com.norvane.toolbox.loomkit.testing.ChildProcess;
import java.io.ByteArrayInputStream;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.time.LocalDateTime;
import java.util.*;
import java.util.stream.Collectors;
import java.util.stream.IntStream;
import java.util.zip.*;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class DescriptionTest {
    private static final String MANIFEST = "component.json";
    private static final String DIGITS = "0".repeat(64);

    @TempDir Path folder;

    /** Describes an archive in a process that has no native libraries. */
    static final class Program {
        public static void main(String[] args) throws IOException {
            System.out.println(Component.describe(TestComponents.archive("showcase")).name());
        }
    }

    @Test
    void needsNoNativeLibraries() throws Exception {
        String components = System.getProperty("loomkit.test.components");
        ChildProcess child = ChildProcess.run(Program.class,
                List.of("-Dloomkit.native.dir=" + folder, "-Dloomkit.test.components=" + components));
        assertEquals("showcase\n", child.output);
    }

    @ParameterizedTest
    @ValueSource(strings = {"linalg", "showcase"})
    void tellsWhatTheOpenComponentDoes(String name) throws IOException {
        Path archive = TestComponents.archive(name);
        ComponentDescription described = Component.describe(archive);
        Map<String, String> helps = new LinkedHashMap<>();
        described.functions().forEach(function -> helps.put(function.name(), function.help()));
        try (Component component = TestComponents.open(name)) {
            assertEquals(List.copyOf(component.functions().entrySet()), List.copyOf(helps.entrySet()));
            assertEquals(component.toString(), described.name() + " " + described.version());
        }
        Map<String, byte[]> files = unzip(archive);
        files.remove(MANIFEST);
        for (ComponentDescription.File file : described.files()) {
            byte[] content = files.remove(file.path());
            assertEquals(content.length + "  " + Sha256.hexOf(content) + "  " + file.path(), file.toString());
        }
        assertEquals(Map.of(), files);
        assertEquals(Sha256.hexOf(Files.readAllBytes(archive)), described.sha256());
        assertEquals(described, Component.describe(archive));
    }

    private static Map<String, byte[]> unzip(Path archive) throws IOException {
        Map<String, byte[]> files = new LinkedHashMap<>();
        try (ZipFile zip = new ZipFile(archive.toFile())) {
            for (Enumeration<? extends ZipEntry> entries = zip.entries(); entries.hasMoreElements(); ) {
                ZipEntry entry = entries.nextElement();
                files.put(entry.getName(), zip.getInputStream(entry).readAllBytes());
            }
        }
        return files;
    }

    /** All deflated but the libraries. */
    private static byte[] zip(Map<String, byte[]> files) throws IOException {
        ByteArrayOutputStream bytes = new ByteArrayOutputStream();
        try (ZipOutputStream zip = new ZipOutputStream(bytes)) {
            for (Map.Entry<String, byte[]> file : files.entrySet()) {
                ZipEntry entry = new ZipEntry(file.getKey());
                entry.setTimeLocal(LocalDateTime.of(2001, 2, 3, 4, 5, 6));
                if (file.getKey().endsWith(".so")) {
                    CRC32 checksum = new CRC32();
                    checksum.update(file.getValue());
                    entry.setMethod(ZipEntry.STORED);
                    entry.setSize(file.getValue().length);
                    entry.setCrc(checksum.getValue());
                }
                zip.putNextEntry(entry);
                zip.write(file.getValue());
            }
        }
        return bytes.toByteArray();
    }

    /** An archive with a stored file of 7 bytes and a deflated one of 300, and edits of its manifest. */
    private static byte[] smallArchive(String... edits) throws IOException {
        byte[] library = latin1("library");
        byte[] text = latin1(IntStream.range(100, 200).mapToObj(Integer::toString).collect(Collectors.joining()));
        String manifest = "{\"name\": \"small\", \"version\": \"1\", \"abi\": 1, \"functions\": [{\"name\": \"f\","
                + " \"symbol\": \"f\", \"help\": \"does\\u202e it\", \"maximumInputs\": 2}],"
                + " \"libraries\": {\"linux-x86_64\": \"lib/x.so\"}, \"sha256\": {\"lib/x.so\": \""
                + Sha256.hexOf(library) + "\", \"data/t.txt\": \"" + Sha256.hexOf(text) + "\"}}";
        for (int i = 0; i < edits.length; i += 2) {
            assertTrue(manifest.contains(edits[i]), edits[i]);
            manifest = manifest.replace(edits[i], edits[i + 1]);
        }
        Map<String, byte[]> files = new LinkedHashMap<>();
        files.put(MANIFEST, latin1(manifest));
        files.put("lib/x.so", library);
        files.put("data/t.txt", text);
        return zip(files);
    }

    private static byte[] latin1(String text) {
        return text.getBytes(StandardCharsets.ISO_8859_1);
    }

    private static String number(int value) {
        byte[] bytes = ByteBuffer.allocate(4).order(ByteOrder.LITTLE_ENDIAN).putInt(value).array();
        return new String(bytes, StandardCharsets.ISO_8859_1);
    }

    private static ComponentDescription described(byte[] archive) throws IOException {
        return new DescribedArchive(archive).describe();
    }

    @Test
    void tellsWhatIsStatedInTextThatIsSafeToPrint() throws IOException {
        ComponentDescription small = described(smallArchive());
        ComponentDescription.Function function = small.functions().get(0);
        assertEquals("does\u202e it", function.help());
        assertEquals("f  does\\u202e it", function.toString());
        assertEquals(2, function.maximumInputs().getAsInt());
        assertTrue(function.minimumInputs().isEmpty() && function.maximumOutputs().isEmpty());
        assertFalse(small.toString().contains("\u202e"), small.toString());
        assertTrue(small.toString().startsWith("small 1\narchive sha256 " + small.sha256()), small.toString());
    }

    @Test
    void refusesByTheNameOfTheBadEntryAsOpeningDoes() throws IOException {
        byte[] good = smallArchive();
        String text = new String(good, StandardCharsets.ISO_8859_1);
        String name = "data/t.txt";
        String[][] table = {
            {"", "The archive is empty."},
            {"hello", "The archive is not a zip file."},
            {"PK", "does not end with the end record"},
            {text.substring(0, text.length() - 30), "The archive is truncated or damaged"},
            {text + "\0", "does not end with the end record"},
            {"PK" + text, "does not follow the directory"},
            {text.replace(name, "data/../tx"), "Archive entry 'data/../tx': its path has the component '..'."},
            {text.replace(name, "/ata/t.txt"), "its path is absolute"},
            {text.replace(name, "data\\t.txt"), "its path has a backslash"},
            {text.replace(name, "data:t.txt"), "its path has a colon"},
            {text.replace(name, "data//.txt"), "its path has an empty component"},
            {text.replace(name, "data/\u001b[2JJ"), "entry 'data/\\x1b[2JJ': its path has a character"},
            {text.replace(name, "caf\u00c3\u00a9/.txt"), "entry 'caf\u00e9/.txt': its path has a character"},
            {text.replace(name, "data/text/"), "it is a folder"},
            {text.replace(name, "lib/x.so/t"), "its folder 'lib/x.so' is a file of the archive"},
            {text.replace(name, "data/u.txt"), "Archive entry 'data/u.txt': component.json has no SHA-256 of it."},
            {text.replace("lib/x.so", "lib/y.so"), "Archive entry 'lib/y.so': component.json has no SHA-256"},
            {text.replace(MANIFEST, "component.JSON"), "The archive has no component.json."},
            {text.replace("library", "Library"), "'lib/x.so': its content is damaged: it does not match its checksum"},
            {text.replace(number(300), number(299)), "'data/t.txt': it has more than the 299 bytes that it states"},
            {text.replace(number(300), number(301)), "'data/t.txt': it has 300 bytes, not the 301 that it states"},
            {text.replace(number(300), number(0xF0000000)), "it has 4026531840 bytes, and 536870912 are allowed"},
            {text.replaceFirst(name, "data/u.txt"), "its local header names it 'data/u.txt'"},
        };
        for (String[] row : table) {
            assertRefused(row[1], latin1(row[0]));
        }
        assertRefused("'gone': component.json lists it",
                smallArchive("256\": {", "256\": {\"gone\": \"" + DIGITS + "\","));
        assertRefused("'no.so': component.json names it as the library for linux-arm",
                smallArchive("ies\": {", "ies\": {\"linux-arm\": \"no.so\","));
        assertRefused("'lib/x.so': its content does not match its SHA-256",
                smallArchive(Sha256.hexOf(latin1("library")), DIGITS));
        assertRefused("more than 200 arrays",
                smallArchive("{\"name\": \"s", "{\"x\": " + "[".repeat(200) + ", \"name\": \"s"));
        int size = ByteBuffer.wrap(good).order(ByteOrder.LITTLE_ENDIAN).getInt(text.indexOf("PK\1\2") + 24);
        assertRefused("'component.json': it has " + (1 << 21), latin1(text.replace(number(size), number(1 << 21))));
        for (Path path : List.of(folder, Path.of("/dev/zero"), folder.resolve("none"))) {
            assertThrows(IOException.class, () -> Component.describe(path), path.toString());
        }
    }

    private void assertRefused(String message, byte[] archive) throws IOException {
        Path file = Files.write(folder.resolve("bad.kpa"), archive);
        IOException failure = assertThrows(IOException.class, () -> Component.describe(file), message);
        assertTrue(failure.getMessage().startsWith(file + ": "), failure.getMessage());
        assertTrue(failure.getMessage().contains(message), failure.getMessage() + "\nnot " + message);
        String nativeRefusal = nativeRefusalOf(archive);
        // Only this reader stops at so many levels, before it comes to what is no JSON.
        boolean isSame = nativeRefusal.contains(message) || message.contains("200 arrays");
        assertTrue(isSame, nativeRefusal + "\nnot " + message);
    }

    /** Bytes that mean nothing: who made an entry, permissions, and the bits behind the end of deflated data. */
    @Test
    void noticesEveryFlipOfAByteThatMeansSomething() throws IOException {
        byte[] good = smallArchive();
        String text = new String(good, StandardCharsets.ISO_8859_1);
        Set<Integer> ignored = new TreeSet<>();
        Set<Integer> free = new TreeSet<>();
        for (int record = text.indexOf("PK\1\2"); record >= 0; record = text.indexOf("PK\1\2", record + 1)) {
            ignored.addAll(List.of(record + 4, record + 5, record + 36, record + 37));
            free.addAll(List.of(record + 38, record + 39, record + 40, record + 41));
        }
        for (int end = text.indexOf("PK\7\10"); end >= 0; end = text.indexOf("PK\7\10", end + 1)) {
            free.add(end - 1);
        }
        ComponentDescription expected = described(good);
        for (int position = 0; position < good.length; position++) {
            for (int flip : new int[] {1, 2, 4, 8, 16, 32, 64, 128, 255}) {
                byte[] bad = good.clone();
                bad[position] ^= (byte) flip;
                String where = "byte " + position + " flipped by " + flip;
                try {
                    ComponentDescription other = described(bad);
                    assertTrue(ignored.contains(position) || free.contains(position), where);
                    assertEquals(expected.toString().replace(expected.sha256(), other.sha256()), other.toString());
                } catch (IOException refusal) {
                    assertFalse(ignored.contains(position), where + refusal);
                }
            }
        }
    }

    /** What the native reader says against an archive; empty when it takes it. */
    private static String nativeRefusalOf(byte[] archive) throws IOException {
        TestComponents.start();
        try (Component component = Component.open(new ByteArrayInputStream(archive))) {
            return component.name().isEmpty() ? "no name" : "";
        } catch (NVException refusal) {
            return refusal.getMessage();
        }
    }

    private static String refusalOf(byte[] archive) {
        try {
            return described(archive).name().isEmpty() ? "no name" : "";
        } catch (IOException refusal) {
            return refusal.getMessage();
        }
    }

    @Test
    void judgesManifestsAsOpeningDoes() throws IOException {
        String[][] edits = {
            {"{", "{\"new\": [null, true, -1.5e3, 0, 1E+2, \"\\ud83d\\ude00\\n\\/\\u0041\", {}, []],", ""},
            {"{", " \r\n\t{", ""},
            {"{", "{\"name\": \"x\",", "the member 'name' is there twice"},
            {"{", "{\"o\": {\"a\": 1, \"\\u0061\": 2},", "the member 'a' is there twice"},
            {"{", "\u00ef\u00bb\u00bf{", "byte order mark"},
            {"{", "{\"n\": \"\0\",", "NUL character"},
            {"{", "{\"n\": \"\t\",", "parse error at line 1, column 8"},
            {"{", "{\"n\": \"\u00c0\u0080\",", "it is not text in UTF-8"},
            {"{", "{\"n\": \"\\ud83d\",", "surrogate pair"},
            {"{", "{\"n\": \"\\ud83d\\u0041\",", "surrogate pair"},
            {"{", "{\"n\": \"\\udc00\",", "surrogate pair"},
            {"{", "{\"n\": \"\\u00g0\",", "a hexadecimal digit"},
            {"{", "{\"n\": \"\\x\",", "parse error"},
            {"{", "{\n\"n\": 01,", "parse error at line 2, column 7"},
            {"{", "{\"n\": 1.,", "a digit"},
            {"{", "{\"n\": +1,", "a value"},
            {"{", "{\"n\": 1e400,", "out of range"},
            {"{", "{\"n\": tru,", "'true'"},
            {"{", "{\"n\": [1,],", "a value"},
            {"{", "{,", "the name of a member"},
            {"{", "{/**/", "the name of a member"},
            {"{", "[{", "parse error"},
            {"{", "1{", "the end of the text"},
            {"\"abi\": 1", "\"abi\": 1.0", "'abi' must be a whole number from 0 to 65535, not 1.0"},
            {"\"abi\": 1", "\"abi\": -0", "must be a whole number"},
            {"\"abi\": 1", "\"abi\": 99999999999999999999", "must be a whole number"},
            {"\"abi\": 1", "\"abi\": [1]", "not array"},
            {"\"abi\": 1,", "", "the member 'abi' is missing"},
            {"\"name\": \"showcase\"", "\"name\": \"\\u001b[2J\"", "not '\\x1b[2J'"},
            {"\"name\": \"showcase\"", "\"name\": \"" + "a".repeat(128) + "\"", ""},
            {"\"name\": \"showcase\"", "\"name\": \"" + "a".repeat(129) + "\"", "'name' must be a letter"},
            {"\"version\": \"1", "\"version\": \"+1", "'version' must be made of"},
            {"\"functions\": [", "\"functions\": [1,", "functions[0] must be an object, not number"},
            {"\"name\": \"say\"", "\"name\": \"caution\"", "the function 'caution' is there twice"},
            {"\"symbol\": \"say\"", "\"symbol\": \"1say\"", "'symbol' of functions[0] must be the name"},
            {"\"help\": \"", "\"help\": \"\\n", "'help' of functions[0] must be one line"},
            {"\"minimumInputs\": 1", "\"minimumInputs\": null", "not null"},
            {"\"minimumInputs\": 1", "\"minimumInputs\": 65536", "not 65536"},
            {"\"minimumInputs\": 1", "\"minimumInputs\": 2", "must not be greater than 'maximumInputs'"},
            {"\"libraries\": {", "\"libraries\": {\"linux\": \"a\",", "the platform 'linux' of 'libraries'"},
            {"\"name\": \"showcase\"", "\"nome\": \"showcase\"", "the member 'name' is missing"},
            {"\"name\": \"showcase\"", "\"name\": 5", "the member 'name' must be a string"},
            {"\"version\"", "\"virsion\"", "the member 'version' is missing"},
            {"\"version\": \"", "\"version\": \"1 ", "the member 'version' must be made of"},
            {"\"abi\": 1", "\"abi\": -1", "must be a whole number from 0 to 65535, not -1"},
            {"\"abi\": 1", "\"abi\": \"1\"", "must be a whole number from 0 to 65535, not string"},
            {"\"functions\"", "\"funktions\"", "the member 'functions' is missing"},
            {"\"functions\": [", "\"functions\": {}, \"f\": [", "the member 'functions' must be an array"},
            {"\"name\": \"say\"", "\"name\": \"2x\"", "'name' of functions[0] must be a letter"},
            {"\"symbol\"", "\"sumbol\"", "the member 'symbol' of functions[0] is missing"},
            {"\"help\": \"", "\"help\": null, \"h\": \"", "'help' of functions[0] must be a string"},
            {"\"libraries\"", "\"libraris\"", "the member 'libraries' is missing"},
            {"\"libraries\": {", "\"libraries\": \"lib/x.so\", \"l\": {", "the member 'libraries' must be an object"},
            {"\"libraries\": {", "\"libraries\": {\"linux-riscv64\": 1,", "'linux-riscv64' of 'libraries' must be a"},
            {"\"libraries\": {", "\"libraries\": {\"linux-riscv64\": \"/x.so\",", "'/x.so': its path is absolute"},
            {"\"sha256\"", "\"sha257\"", "the member 'sha256' is missing"},
            {"\"sha256\": {", "\"sha256\": [], \"s\": {", "the member 'sha256' must be an object"},
            {"\"sha256\": {", "\"sha256\": {\"../a\": \"" + DIGITS + "\",", "names '../a': its path has the"},
            {"\"sha256\": {", "\"sha256\": {\"a\": \"" + DIGITS.replace('0', 'A') + "\",", "64 lower-case"},
        };
        Map<String, byte[]> files = unzip(TestComponents.archive("showcase"));
        String manifest = new String(files.get(MANIFEST), StandardCharsets.ISO_8859_1);
        for (String[] edit : edits) {
            int start = manifest.indexOf(edit[0]);
            assertTrue(start >= 0, edit[0]);
            String edited = manifest.substring(0, start) + edit[1] + manifest.substring(start + edit[0].length());
            files.put(MANIFEST, latin1(edited));
            byte[] archive = zip(files);
            String refusal = refusalOf(archive);
            assertTrue(edit[2].isEmpty() ? refusal.isEmpty() : refusal.contains(edit[2]), edit[1] + ": " + refusal);
            String nativeRefusal = nativeRefusalOf(archive);
            assertEquals(nativeRefusal.isEmpty(), refusal.isEmpty(), edit[1] + ": " + refusal);
            // Both use the same words, but for what is no JSON and for how a number is written.
            if (!refusal.contains("parse error") && !refusal.contains("UTF-8")) {
                assertTrue(nativeRefusal.contains(refusal.split(", not ")[0]), refusal + "\nnot " + nativeRefusal);
            }
        }
    }

    @Test
    void judgesDamageAsOpeningDoes() throws IOException {
        byte[] good = Files.readAllBytes(TestComponents.archive("showcase"));
        int directory = new String(good, StandardCharsets.ISO_8859_1).indexOf("PK\1\2");
        long seed = new Random().nextLong();
        Random random = new Random(seed);
        for (int round = 0; round < 150; round++) {
            int position = random.nextInt(8) == 0 ? random.nextInt(good.length)
                    : random.nextInt(4) == 0 ? random.nextInt(50)
                    : directory + random.nextInt(good.length - directory);
            byte[] bad = good.clone();
            int flipped = bad[position] ^ 1 << random.nextInt(8);
            bad[position] = (byte) (random.nextBoolean() ? random.nextInt(256) : flipped);
            if (random.nextInt(8) == 0) {
                System.arraycopy(good, position, bad, position - Math.min(position, 1), good.length - position);
                bad = Arrays.copyOf(bad, good.length - random.nextInt(2));
            }
            String refusal = refusalOf(bad);
            String where = "seed " + seed + ", round " + round + ": " + refusal;
            assertEquals(nativeRefusalOf(bad).isEmpty(), refusal.isEmpty(), where);
        }
    }
}
