#include "storage.h"

namespace {

/// Puts an array on the list of what is still to be destroyed. It leaves its scope, so that its links are free.
void addPending(qxArray*& pending, qxArray* array) noexcept {
    qxArrayAccess::leaveScope(array);
    qxArrayAccess::nextOf(array) = pending;
    pending = array;
}

/// Ends a storage that no header is over any more; its elements go to the list.
void endStorage(qx::ArrayStorage* storage, qxArray*& pending) noexcept {
    for (std::size_t slot = 0; storage->real != nullptr && slot < storage->slotCount; ++slot) {
        if (storage->slots()[slot] != nullptr) {
            addPending(pending, storage->slots()[slot]);
        }
    }
    qxFree(storage->real);
    qxFree(storage->imag);
    qxFree(storage->rowIndex);
    qxFree(storage->columnStart);
    if (storage->opaque && storage->opaque->destroy != nullptr) {
        storage->opaque->destroy(storage->opaque->payload);
    }
    delete storage;
}

}  // namespace

void qxDestroyArray(qxArray* array) {
    if (array == nullptr) {
        return;
    }
    // A list in place of recursion: cells nest as deep as memory lets them.
    qxArray* pending = nullptr;
    addPending(pending, array);
    while (pending != nullptr) {
        qxArray* ended = pending;
        pending = qxArrayAccess::nextOf(ended);
        qx::ArrayStorage* storage = &qx::storageOf(ended);
        qxArrayAccess::deleteHeader(ended);
        if (storage->headers.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            endStorage(storage, pending);
        }
    }
}
