package com.norvane.toolbox.loomkit;

import com.norvane.toolbox.loomkit.internal.ArchiveFailure;
import com.norvane.toolbox.loomkit.internal.ArchiveReader;
import com.norvane.toolbox.loomkit.internal.Sha256;
import com.norvane.toolbox.loomkit.internal.StrictJson;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;

/**
 * A component archive in memory, read to its last byte as an extraction does, but for what depends on the platform:
 * whether there is a library for it, and whether it fits the runtime. {@link StrictJson#MAX_DEPTH} is the one limit
 * that the native reader doesn't have.
 */
final class DescribedArchive {
    private static final String MANIFEST = "component.json";
    private static final int MAX_ENTRIES = 4096;
    private static final long MAX_MANIFEST_BYTES = 1 << 20;
    private static final long MAX_FILE_BYTES = 1 << 29;
    private static final long MAX_TOTAL_BYTES = 1 << 30;

    /** All but the manifest, by their paths. */
    private final Map<String, ArchiveReader.Entry> files = new TreeMap<>();
    private final Manifest manifest;
    private final String digest;

    /**
     * @param archive the bytes of the archive, which must not change any more
     * @throws IOException that names the entry and what is wrong with it
     */
    DescribedArchive(byte[] archive) throws IOException {
        manifest = new Manifest(readHeaders(ArchiveReader.read(archive, MAX_ENTRIES)));
        requireNoFileAsFolder();
        compareWithManifest();
        digest = Sha256.hexOf(archive);
    }

    /** Compares the files with their digests. */
    ComponentDescription describe() throws IOException {
        List<ComponentDescription.File> described = new ArrayList<>();
        for (ArchiveReader.Entry entry : files.values()) {
            Sha256 content = new Sha256();
            entry.read(content::update);
            String expected = manifest.digests.get(entry.path());
            if (!content.hex().equals(expected)) {
                throw ArchiveFailure.ofEntry(
                        entry.path(), "its content does not match its SHA-256 in component.json");
            }
            described.add(new ComponentDescription.File(entry.path(), entry.size(), expected));
        }
        return new ComponentDescription(manifest.name, manifest.version, manifest.functions, digest, described);
    }

    /** Sorts the entries into files and the manifest, whose content it gives. */
    private byte[] readHeaders(List<ArchiveReader.Entry> entries) throws IOException {
        ArchiveReader.Entry described = null;
        long total = 0;
        for (ArchiveReader.Entry entry : entries) {
            String problem = EntryPath.problemOf(entry.path());
            if (problem != null) {
                throw ArchiveFailure.ofEntry(entry.path(), problem);
            }
            boolean isManifest = entry.path().equals(MANIFEST);
            requireSize(entry, isManifest ? MAX_MANIFEST_BYTES : MAX_FILE_BYTES);
            total += entry.size();
            if (total > MAX_TOTAL_BYTES) {
                throw ArchiveFailure.ofEntry(entry.path(), "with it the files have more than the "
                        + MAX_TOTAL_BYTES + " bytes that are allowed together");
            }
            if (isManifest ? described != null : files.put(entry.path(), entry) != null) {
                throw ArchiveFailure.ofEntry(entry.path(), "it is there twice");
            }
            described = isManifest ? entry : described;
        }
        if (described == null) {
            throw ArchiveFailure.ofArchive("The archive has no " + MANIFEST + ".");
        }
        ByteArrayOutputStream content = new ByteArrayOutputStream();
        described.read(content::write);
        return content.toByteArray();
    }

    private static void requireSize(ArchiveReader.Entry entry, long limit) throws IOException {
        if (entry.size() > limit) {
            throw ArchiveFailure.ofEntry(
                    entry.path(), "it has " + entry.size() + " bytes, and " + limit + " are allowed");
        }
    }

    /** No file may stand where another one needs a folder. */
    private void requireNoFileAsFolder() throws IOException {
        for (String path : files.keySet()) {
            for (int slash = path.indexOf('/'); slash >= 0; slash = path.indexOf('/', slash + 1)) {
                String folder = path.substring(0, slash);
                if (files.containsKey(folder) || folder.equals(MANIFEST)) {
                    throw ArchiveFailure.ofEntry(path, "its folder '" + folder + "' is a file of the archive");
                }
            }
        }
    }

    private void compareWithManifest() throws IOException {
        for (String path : files.keySet()) {
            if (!manifest.digests.containsKey(path)) {
                throw ArchiveFailure.ofEntry(path, "component.json has no SHA-256 of it");
            }
        }
        for (String path : manifest.digests.keySet()) {
            if (!files.containsKey(path)) {
                throw ArchiveFailure.ofEntry(path, "component.json lists it, but it is not in the archive");
            }
        }
        for (Map.Entry<String, String> library : manifest.libraries.entrySet()) {
            if (!files.containsKey(library.getValue())) {
                throw ArchiveFailure.ofEntry(library.getValue(), "component.json names it as the library for "
                        + library.getKey() + ", but it is not in the archive");
            }
        }
    }
}
