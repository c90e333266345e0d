// Archives that are made of arbitrary bytes, and archives that are made to lie: whatever they are, reading them ends
// with a vrlBaseException or with files that are safe to write and match their digests.

#include "craftedzip.h"

#include "vrlkrt/archive/archive.h"
#include "vrlkrt/archive/archivepath.h"
#include "vrlkrt/archive/digest.h"

#include "vrlbase/exceptions.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>

namespace {

/// What a lawful reader hands on must add up.
class CheckingSink : public vrlkrt::ArchiveSink {
public:
    explicit CheckingSink(const vrlkrt::Manifest& manifest) : manifest_(manifest) {}

    void beginFile(const std::string& path) override {
        path_ = path;
        content_.clear();
        if (!vrlkrt::entryPathProblem(path).empty()) {
            std::abort();
        }
    }
    void data(const char* bytes, std::size_t count) override { content_.append(bytes, count); }
    void endFile() override {
        if (vrlkrt::sha256Hex(content_) != manifest_.digests.at(path_)) {
            std::abort();
        }
    }

private:
    const vrlkrt::Manifest& manifest_;
    std::string path_;
    std::string content_;
};

void readAll(std::string bytes) {
    vrlkrt::ArchiveLimits limits;
    limits.archiveBytes = 1 << 20;
    limits.entries = 64;
    limits.fileBytes = 1 << 20;
    limits.totalBytes = 1 << 22;
    try {
        const vrlkrt::ComponentArchive archive(std::make_shared<const std::string>(std::move(bytes)), limits);
        CheckingSink sink(archive.manifest());
        archive.readFiles(sink);
        archive.verify();
    } catch (const Norvane::vrl::vrlBaseException&) {
        return;
    }
}

CraftedEntry craftEntry(FuzzedDataProvider& input) {
    CraftedEntry entry;
    entry.path = input.ConsumeRandomLengthString(40);
    for (char& c : entry.path) {
        c = static_cast<char>(c & 0x7F);  // the manifest of the crafted component is JSON
    }
    entry.content = input.ConsumeRandomLengthString(100);
    if (input.ConsumeBool()) {
        entry.unixMode = input.ConsumeIntegral<std::uint32_t>() & 0xFFFF;
        entry.flags = input.ConsumeIntegral<std::uint16_t>();
    }
    if (input.ConsumeBool()) {
        entry.statedSize = input.ConsumeIntegral<std::uint32_t>();
    }
    return entry;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    FuzzedDataProvider input(bytes, count);
    if (input.ConsumeBool()) {
        readAll(input.ConsumeRemainingBytesAsString());
        return 0;
    }
    CraftedComponent component;
    const int files = input.ConsumeIntegralInRange(0, 5);
    for (int file = 0; file < files; ++file) {
        component.files.push_back(craftEntry(input));
    }
    std::string zip = component.zip();
    for (int changes = input.ConsumeIntegralInRange(0, 4); changes > 0; --changes) {
        zip[input.ConsumeIntegralInRange<std::size_t>(0, zip.size() - 1)] = input.ConsumeIntegral<char>();
    }
    readAll(std::move(zip));
    return 0;
}
