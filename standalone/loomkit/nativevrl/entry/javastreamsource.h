#pragma once

#include "proxies/jsystemproxies.h"

#include <boost/iostreams/concepts.hpp>

#include <ios>

namespace nativevrl {

/// A java.io.InputStream as a source of bytes for boost::iostreams. A Java exception in `read` looks like the end of
/// the stream, and stays pending.
class JInputStreamProxySource : public boost::iostreams::source {
public:
    /// The stream is the caller's, and outlives the source.
    explicit JInputStreamProxySource(JInputStreamProxy* stream) : stream_(stream) {}

    /// Puts up to `count` bytes at `target`: how many, or -1 at the end.
    std::streamsize read(char* target, std::streamsize count);

private:
    JInputStreamProxy* stream_;
};

/// One call of InputStream.read(byte[]) with an array of `count` bytes, all of which are copied to `target`, also
/// those behind what was read. Gives what `read` gave: a number of bytes, or -1 at the end.
jint readChunk(JInputStreamProxy& stream, char* target, jint count);

}  // namespace nativevrl
