#include "samples.h"

#include <filesystem>
#include <fstream>
#include <iostream>

/// Writes NAME.cbor, the serialised form, and NAME.json, what it must say, for every sample into a folder.
int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: qx_serial_samples FOLDER\n";
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    for (const Sample& sample : makeSamples()) {
        const qxArrayOwner form(qxSerialize(sample.array.get()));
        if (!form) {
            std::cerr << sample.name << " has no serialised form\n";
            return 1;
        }
        std::ofstream(folder / (sample.name + ".cbor"), std::ios::binary)
            .write(static_cast<const char*>(form->realData()), static_cast<std::streamsize>(qxGetN(form.get())));
        std::ofstream(folder / (sample.name + ".json")) << sample.json;
    }
    return 0;
}
