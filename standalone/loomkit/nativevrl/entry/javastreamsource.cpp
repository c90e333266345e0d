#include "entry/javastreamsource.h"

#include "proxies/jarrayproxy.h"

#include <boost/numeric/conversion/cast.hpp>

#include <cstring>

namespace nativevrl {

std::streamsize JInputStreamProxySource::read(char* target, std::streamsize count) {
    const jint chunk = boost::numeric_cast<jint>(count);
    try {
        return readChunk(*stream_, target, chunk);
    } catch (const tether::Exception&) {
        return -1;
    }
}

jint readChunk(JInputStreamProxy& stream, char* target, jint count) {
    NewJPrimitiveArrayProxy<jbyte> chunk(stream.env(), static_cast<std::size_t>(count));
    const jint result = stream.read(static_cast<jbyteArray>(chunk.ref()));
    const jbyte* bytes = chunk.getElements();
    std::memmove(target, bytes, static_cast<std::size_t>(chunk.length()));
    return result;
}

}  // namespace nativevrl
