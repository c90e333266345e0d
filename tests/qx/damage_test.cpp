#include "nanbits.h"
#include "samples.h"
#include "support.h"

namespace {

using DamagedForm = QxTest;
using Bytes = std::vector<unsigned char>;

/// What reading must make of bytes that nobody vouches for: nothing, or an array whose form they are, but for the bits
/// of a NaN.
void expectRefusedOrExact(const Bytes& bytes, const std::string& what) {
    const qxArrayOwner array = arrayOf(bytes);
    if (array) {
        const Bytes form = formOf(array.get());
        EXPECT_TRUE(form.size() == bytes.size() && differInNaNsOnly(bytes.data(), form.data(), form.size())) << what;
    }
}

TEST_F(DamagedForm, IsRefusedOrExactForEveryChangeOfAByte) {
    for (const Sample& sample : makeSamples()) {
        const Bytes form = formOf(sample.array.get());
        Bytes changed = form;
        for (std::size_t at = 0; at < form.size(); ++at) {
            for (unsigned delta = 1; delta < 256; ++delta) {
                changed[at] = static_cast<unsigned char>(form[at] ^ delta);
                expectRefusedOrExact(changed, sample.name + ", byte " + std::to_string(at));
            }
            changed[at] = form[at];
        }
    }
}

TEST_F(DamagedForm, IsRefusedOrExactAfterCuts) {
    for (const Sample& sample : makeSamples()) {
        const Bytes form = formOf(sample.array.get());
        for (std::size_t from = 0; from < form.size(); ++from) {
            EXPECT_FALSE(qxDeserialize(form.data(), from)) << sample.name << " cut to " << from;
            for (std::size_t to = from + 1; to < form.size(); ++to) {
                Bytes cut(form.begin(), form.begin() + static_cast<std::ptrdiff_t>(from));
                cut.insert(cut.end(), form.begin() + static_cast<std::ptrdiff_t>(to), form.end());
                expectRefusedOrExact(cut,
                                     sample.name + " without " + std::to_string(from) + " to " + std::to_string(to));
            }
        }
        Bytes padded = form;
        padded.push_back(0);
        EXPECT_FALSE(arrayOf(padded)) << sample.name << " with a byte behind it";
    }
    EXPECT_FALSE(qxDeserialize(nullptr, 5));
}

// array: in hexadecimal digits
// What stands for an array in [version, array]. D840 is the tag of bytes. Other versions, tags, lengths and bytes in
// place of good ones are among the changes of a byte above.
const std::pair<const char*, const char*> badForms[] = {
    {"null in place of the array", "F6"},
    {"class 5", "8205820000"},
    {"class 17", "8211820101"},
    {"class 2^32 + 1", "831B000000010000000182000080"},
    {"unknown class with an element", "8200820101"},
    {"one extent", "82008100"},
    {"extent 2^31", "820082001A80000000"},
    {"extent in a long form", "820082001800"},
    {"extents of indefinite length", "82009F0000FF"},
    {"extents for 2^60 dimensions", "82009B1000000000000000"},
    {"no bytes for the element", "8309820101D84040"},
    {"tag in a long form", "8309820101D900404105"},
    {"complex logical", "8403820101D8404101D8404101"},
    {"2^32 elements", "8309821A000100001A00010000D84040"},
    {"2^32 elements before an extent of 0", "8309831A000100001A0001000000D84040"},
    {"cell of 2^32 slots before an extent of 0", "8301831A000100001A000100000080"},
    {"struct of 2^32 elements before an extent of 0", "8402831A000100001A00010000008080"},
    {"unknown class of 2^32 elements before an extent of 0", "8200831A000100001A0001000000"},
    {"cell of 2^31-1 slots out of nothing", "830182011A7FFFFFFF9A7FFFFFFF"},
    {"sparse int8", "8508820000D8464400000000D84640D84840"},
    {"sparse with three extents", "850383000000D8464400000000D84640D84040"},
    {"sparse with a start too few", "8503820001D8464400000000D84640D84040"},
    {"field twice", "8402820000826161616180"},
    {"field without a name", "8402820000816080"},
    {"field name as bytes that are UTF-8", "840282000081416180"},
    {"field name as bytes that are modified UTF-8 for what UTF-8 can hold", "84028200008146EDA0B5EDB29C80"},
    {"field name as bytes with a pair in plain UTF-8 beside a lone surrogate", "84028200008147F09D929CEDA08080"},
    {"function handle without a name", "831082010181F6"},
    {"function handle of two elements", "831082010282F6F6"}};

/// The form of version 1 around an array in hexadecimal digits.
Bytes formAround(const std::string& array) {
    Bytes form = {0x82, 0x01};
    for (std::size_t at = 0; at < array.size(); at += 2) {
        form.push_back(static_cast<unsigned char>(std::stoi(array.substr(at, 2), nullptr, 16)));
    }
    return form;
}

TEST_F(DamagedForm, IsRefusedWhereItBreaksARule) {
    const std::vector<std::uint32_t> ones(255, 1);
    Bytes extents = formOf(qxArrayOwner(qxCreateNumericArray(255, ones.data(), qxUINT8_CLASS, qxREAL)).get());
    EXPECT_TRUE(arrayOf(extents));
    const Bytes head = {0x99, 0x01, 0x00, 0x01};  // 256 extents in place of 255, the first of them
    extents.insert(extents.erase(extents.begin() + 4, extents.begin() + 6), head.begin(), head.end());
    EXPECT_FALSE(arrayOf(extents));
    for (const auto& [what, array] : badForms) {
        EXPECT_FALSE(arrayOf(formAround(array))) << what;
    }
}

}  // namespace
