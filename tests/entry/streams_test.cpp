#include "entry/javastreamsource.h"
#include "support/javaobjects.h"
#include "support/jvmtest.h"

#include <boost/iostreams/stream_buffer.hpp>

#include <istream>
#include <string>

namespace nativevrl::test {

namespace {

std::vector<jbyte> someBytes(std::size_t count) {
    std::vector<jbyte> bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<jbyte>(i * 31 + i / 4096);
    }
    return bytes;
}

using Streams = JvmTest;

TEST_F(Streams, AChunkIsWhatOneReadGives) {
    JInputStreamProxy stream(env, chunkedStream(env, {1, 2, 3}, 2));
    JInputStreamProxySource source(&stream);
    char target[8] = {};
    const JniCounter counter(env);
    EXPECT_EQ(source.read(target, 8), 2);
    EXPECT_EQ(target[1], 2);
    EXPECT_EQ(source.read(target, 8), 1);
    EXPECT_EQ(source.read(target, 8), -1);
    EXPECT_EQ(counter.pinnedBlocks(), 0);
    EXPECT_EQ(counter.localReferences(), 0);
}

TEST_F(Streams, AStandardStreamReadsChunksOf4096) {
    const struct {
        std::size_t bytes;
        jint chunk;
        jint reads;
    } cases[] = {{4096, 8192, 1}, {3 * 4096, 8192, 3}, {4097, 8192, 2}, {100, 1, 100}, {5000, 1000, 5}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.bytes);
        const std::vector<jbyte> bytes = someBytes(one.bytes);
        jobject javaStream = chunkedStream(env, bytes, one.chunk);
        JInputStreamProxy stream(env, javaStream);
        boost::iostreams::stream_buffer<JInputStreamProxySource> buffer(JInputStreamProxySource(&stream), -1, -1);
        std::istream input(&buffer);
        std::vector<jbyte> target(one.bytes);
        input.read(reinterpret_cast<char*>(target.data()), static_cast<std::streamsize>(one.bytes));
        EXPECT_EQ(input.gcount(), static_cast<std::streamsize>(one.bytes));
        EXPECT_EQ(target, bytes);
        EXPECT_EQ(callInt(env, javaStream, "reads", "()I"), one.reads);
    }
}

}  // namespace

}  // namespace nativevrl::test
