#include "cborreader.h"

#include <cbor/streaming.h>

namespace qx {

namespace {

using Kind = CborItem::Kind;

void store(void* target, Kind kind, std::uint64_t value, const unsigned char* data = nullptr) {
    *static_cast<CborItem*>(target) = {kind, value, data};
}

template <typename Number>
void storeUnsigned(void* target, Number value) {
    store(target, Kind::unsignedNumber, value);
}

/// Whatever the serialised form does not use keeps the kind "other", with which an item starts out.
cbor_callbacks makeCallbacks() {
    cbor_callbacks callbacks = cbor_empty_callbacks;
    callbacks.uint8 = storeUnsigned<std::uint8_t>;
    callbacks.uint16 = storeUnsigned<std::uint16_t>;
    callbacks.uint32 = storeUnsigned<std::uint32_t>;
    callbacks.uint64 = storeUnsigned<std::uint64_t>;
    callbacks.byte_string = [](void* target, cbor_data data, std::size_t count) {
        store(target, Kind::bytes, count, data);
    };
    callbacks.string = [](void* target, cbor_data data, std::size_t count) { store(target, Kind::text, count, data); };
    callbacks.array_start = [](void* target, std::size_t items) { store(target, Kind::array, items); };
    callbacks.tag = [](void* target, std::uint64_t tag) { store(target, Kind::tag, tag); };
    callbacks.null = [](void* target) { store(target, Kind::null, 0); };
    return callbacks;
}

std::size_t shortestHead(std::uint64_t value) {
    return value < 24 ? 1 : value <= 0xFF ? 2 : value <= 0xFFFF ? 3 : value <= 0xFFFFFFFF ? 5 : 9;
}

}  // namespace

bool CborReader::read(CborItem& item) noexcept {
    static const cbor_callbacks callbacks = makeCallbacks();
    item = {};
    const cbor_decoder_result result = cbor_stream_decode(at_, remaining_, &callbacks, &item);
    if (result.status != CBOR_DECODER_FINISHED || item.kind == Kind::other) {
        return false;
    }
    const std::size_t body = item.data == nullptr ? 0 : static_cast<std::size_t>(item.value);
    at_ += result.read;
    remaining_ -= result.read;
    return result.read - body == shortestHead(item.value);
}

bool CborReader::readUnsigned(std::uint64_t& value) noexcept {
    CborItem item;
    const bool isUnsigned = read(item) && item.kind == Kind::unsignedNumber;
    value = item.value;
    return isUnsigned;
}

bool CborReader::readArrayStart(std::uint64_t& items) noexcept {
    CborItem item;
    const bool isArray = read(item) && item.kind == Kind::array;
    items = item.value;
    return isArray && items <= remaining_;
}

bool CborReader::readTagged(std::uint64_t tag, std::string_view& bytes) noexcept {
    CborItem head;
    CborItem body;
    if (!read(head) || head.kind != Kind::tag || head.value != tag || !read(body) || body.kind != Kind::bytes) {
        return false;
    }
    bytes = {reinterpret_cast<const char*>(body.data), static_cast<std::size_t>(body.value)};
    return true;
}

}  // namespace qx
