#include "storage.h"

#include <algorithm>
#include <new>

namespace {

std::atomic<std::size_t> liveHeaders{0};

}  // namespace

qxArray* qxArrayAccess::newHeader(std::uint32_t classWord, std::uint32_t flags, qx::Shape shape,
                                  qx::ArrayStorage* storage) noexcept {
    auto* header = new (std::nothrow) qxArray;
    if (header == nullptr) {
        return nullptr;
    }
    std::uint32_t* extents = header->inlineDimensions_;
    if (shape.count > std::size(header->inlineDimensions_)) {
        extents = new (std::nothrow) std::uint32_t[shape.count];
        if (extents == nullptr) {
            delete header;
            return nullptr;
        }
    }
    std::copy_n(shape.extents, shape.count, extents);
    header->classWord_ = classWord;
    header->numberOfDimensions_ = shape.count;
    header->flags_ = flags;
    header->dimensions_ = extents;
    header->storage_ = storage;
    liveHeaders.fetch_add(1, std::memory_order_relaxed);
    return header;
}

void qxArrayAccess::deleteHeader(qxArray* array) noexcept {
    if (array->dimensions_ != array->inlineDimensions_) {
        delete[] array->dimensions_;
    }
    delete array;
    liveHeaders.fetch_sub(1, std::memory_order_relaxed);
}

std::size_t qxLiveArrayCount() { return liveHeaders.load(std::memory_order_relaxed); }

namespace qx {

qxArrayOwner newArray(qxClassID classId, std::uint32_t flags, Shape shape) {
    std::unique_ptr<ArrayStorage> storage(new (std::nothrow) ArrayStorage);
    if (!storage) {
        return nullptr;
    }
    qxArrayOwner array(qxArrayAccess::newHeader(static_cast<std::uint32_t>(classId), flags, shape, storage.get()));
    if (array) {
        static_cast<void>(storage.release());  // the header owns it
    }
    return array;
}

}  // namespace qx

void qxSetData(qxArray* array, void* real) { qx::storageOf(array).real = real; }

void qxSetImagData(qxArray* array, void* imag) {
    qx::storageOf(array).imag = imag;
    qxArrayAccess::setFlag(array, qxCOMPLEX_FLAG, imag != nullptr);
}

void qxMoveImagData(qxArray* array, void* imag) { qx::storageOf(array).imag = imag; }

void qxSetIr(qxArray* array, std::uint32_t* rowIndex) { qx::storageOf(array).rowIndex = rowIndex; }

void qxSetJc(qxArray* array, std::uint32_t* columnStart) { qx::storageOf(array).columnStart = columnStart; }

void qxSetNzmax(qxArray* array, std::uint32_t capacity) { qx::storageOf(array).capacity = capacity; }

bool qxSharesStorage(const qxArray* first, const qxArray* second) {
    return first != nullptr && second != nullptr && &qx::storageOf(first) == &qx::storageOf(second);
}
