#include "samples.h"
#include "support.h"

namespace {

using DamagedForm = QxTest;
using Bytes = std::vector<unsigned char>;

/// What reading must make of bytes that nobody vouches for: nothing, or an array whose form they are.
void expectRefusedOrExact(const Bytes& bytes, const std::string& what) {
    const qxArrayOwner array = arrayOf(bytes);
    if (array) {
        EXPECT_EQ(formOf(array.get()), bytes) << what;
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

TEST_F(DamagedForm, IsRefusedWhenCutOrPadded) {
    for (const Sample& sample : makeSamples()) {
        Bytes form = formOf(sample.array.get());
        for (std::size_t length = 0; length < form.size(); ++length) {
            EXPECT_FALSE(qxDeserialize(form.data(), length)) << sample.name << " cut to " << length;
        }
        form.push_back(0);
        EXPECT_FALSE(arrayOf(form)) << sample.name << " with a byte behind it";
    }
}

TEST_F(DamagedForm, IsRefusedOrExactAfterCutsOutOfTheMiddle) {
    for (const Sample& sample : makeSamples()) {
        const Bytes form = formOf(sample.array.get());
        for (std::size_t from = 0; from < form.size(); ++from) {
            for (std::size_t to = from + 1; to <= form.size(); ++to) {
                Bytes cut(form.begin(), form.begin() + static_cast<std::ptrdiff_t>(from));
                cut.insert(cut.end(), form.begin() + static_cast<std::ptrdiff_t>(to), form.end());
                expectRefusedOrExact(cut,
                                     sample.name + " without " + std::to_string(from) + " to " + std::to_string(to));
            }
        }
    }
}

struct BadForm {
    const char* what;
    Bytes bytes;
};

class BadFormTest : public QxTest, public testing::WithParamInterface<BadForm> {};

TEST_P(BadFormTest, IsRefused) { EXPECT_FALSE(arrayOf(GetParam().bytes)) << GetParam().what; }

// Each stands for [version, array]; 0x82 0x01 begins the good ones. 0xD8 0x40 is the tag of bytes.
INSTANTIATE_TEST_SUITE_P(
    Rules, BadFormTest,
    testing::Values(
        BadForm{"another version", {0x82, 0x02, 0x82, 0x00, 0x82, 0x00, 0x00}},
        BadForm{"null in place of the array", {0x82, 0x01, 0xF6}},
        BadForm{"class 5", {0x82, 0x01, 0x82, 0x05, 0x82, 0x00, 0x00}},
        BadForm{"class 17", {0x82, 0x01, 0x82, 0x11, 0x82, 0x01, 0x01}},
        BadForm{"class 2^32 + 1", {0x82, 0x01, 0x83, 0x1B, 0, 0, 0, 1, 0, 0, 0, 1, 0x82, 0x00, 0x00, 0x80}},
        BadForm{"unknown class with an element", {0x82, 0x01, 0x82, 0x00, 0x82, 0x01, 0x01}},
        BadForm{"one extent", {0x82, 0x01, 0x82, 0x00, 0x81, 0x00}},
        BadForm{"extent 2^31", {0x82, 0x01, 0x82, 0x00, 0x82, 0x00, 0x1A, 0x80, 0, 0, 0}},
        BadForm{"extent in a long form", {0x82, 0x01, 0x82, 0x00, 0x82, 0x00, 0x18, 0x00}},
        BadForm{"extents of indefinite length", {0x82, 0x01, 0x82, 0x00, 0x9F, 0x00, 0x00, 0xFF}},
        BadForm{"extents for 2^60 dimensions", {0x82, 0x01, 0x82, 0x00, 0x9B, 0x10, 0, 0, 0, 0, 0, 0, 0}},
        BadForm{"no bytes for the element", {0x82, 0x01, 0x83, 0x09, 0x82, 0x01, 0x01, 0xD8, 0x40, 0x40}},
        BadForm{"tag in a long form", {0x82, 0x01, 0x83, 0x09, 0x82, 0x01, 0x01, 0xD9, 0x00, 0x40, 0x41, 0x05}},
        BadForm{"wrong tag", {0x82, 0x01, 0x83, 0x09, 0x82, 0x01, 0x01, 0xD8, 0x48, 0x41, 0x05}},
        BadForm{"text in place of bytes", {0x82, 0x01, 0x83, 0x09, 0x82, 0x01, 0x01, 0xD8, 0x40, 0x61, 0x05}},
        BadForm{"logical 2", {0x82, 0x01, 0x83, 0x03, 0x82, 0x01, 0x01, 0xD8, 0x40, 0x41, 0x02}},
        BadForm{"complex logical",
                {0x82, 0x01, 0x84, 0x03, 0x82, 0x01, 0x01, 0xD8, 0x40, 0x41, 0x01, 0xD8, 0x40, 0x41, 0x01}},
        BadForm{"2^32 elements",
                {0x82, 0x01, 0x83, 0x09, 0x82, 0x1A, 0x00, 0x01, 0, 0, 0x1A, 0x00, 0x01, 0, 0, 0xD8, 0x40, 0x40}},
        BadForm{"cell of 2^31-1 slots out of nothing",
                {0x82, 0x01, 0x83, 0x01, 0x82, 0x01, 0x1A, 0x7F, 0xFF, 0xFF, 0xFF, 0x9A, 0x7F, 0xFF, 0xFF, 0xFF}},
        BadForm{"fewer slots than elements", {0x82, 0x01, 0x83, 0x01, 0x82, 0x01, 0x02, 0x81, 0xF6}},
        BadForm{"sparse int8", {0x82, 0x01, 0x85, 0x08, 0x82, 0x00, 0x00, 0xD8, 0x46, 0x44,
                                0,    0,    0,    0,    0xD8, 0x46, 0x40, 0xD8, 0x48, 0x40}},
        BadForm{"sparse with three extents", {0x82, 0x01, 0x85, 0x03, 0x83, 0x00, 0x00, 0x00, 0xD8, 0x46, 0x44,
                                              0,    0,    0,    0,    0xD8, 0x46, 0x40, 0xD8, 0x40, 0x40}},
        BadForm{"sparse with a start too few", {0x82, 0x01, 0x85, 0x03, 0x82, 0x00, 0x01, 0xD8, 0x46, 0x44,
                                                0,    0,    0,    0,    0xD8, 0x46, 0x40, 0xD8, 0x40, 0x40}},
        BadForm{"field twice", {0x82, 0x01, 0x84, 0x02, 0x82, 0x00, 0x00, 0x82, 0x61, 'a', 0x61, 'a', 0x80}},
        BadForm{"field twice, once as modified UTF-8",
                {0x82, 0x01, 0x84, 0x02, 0x82, 0x00, 0x00, 0x82, 0x64, 0xF0, 0x9D,
                 0x92, 0x9C, 0x46, 0xED, 0xA0, 0xB5, 0xED, 0xB2, 0x9C, 0x80}},
        BadForm{"field without a name", {0x82, 0x01, 0x84, 0x02, 0x82, 0x00, 0x00, 0x81, 0x60, 0x80}},
        BadForm{"NUL in a field name", {0x82, 0x01, 0x84, 0x02, 0x82, 0x00, 0x00, 0x81, 0x62, 'a', 0, 0x80}},
        BadForm{"field name as bytes that are UTF-8",
                {0x82, 0x01, 0x84, 0x02, 0x82, 0x00, 0x00, 0x81, 0x41, 'a', 0x80}},
        BadForm{"field name as text that is not UTF-8",
                {0x82, 0x01, 0x84, 0x02, 0x82, 0x00, 0x00, 0x81, 0x61, 0xFF, 0x80}},
        BadForm{"function handle without a name", {0x82, 0x01, 0x83, 0x10, 0x82, 0x01, 0x01, 0x81, 0xF6}},
        BadForm{"function handle of two elements", {0x82, 0x01, 0x83, 0x10, 0x82, 0x01, 0x02, 0x82, 0xF6, 0xF6}}));

TEST_F(DamagedForm, OfRandomBytesIsRefusedOrExact) {
    const auto seed = static_cast<std::uint32_t>(testing::UnitTest::GetInstance()->random_seed());
    std::uint32_t state = seed * 2654435761U + 1;
    for (int round = 0; round < 20000; ++round) {
        Bytes bytes = {0x82, 0x01};
        for (int i = 0; i < 24; ++i) {
            state = state * 1664525U + 1013904223U;
            bytes.push_back(static_cast<unsigned char>(state >> 24U));
        }
        expectRefusedOrExact(bytes, "round " + std::to_string(round));
    }
    EXPECT_FALSE(qxDeserialize(nullptr, 5));
}

}  // namespace
