#include "classtable.h"
#include "storage.h"
#include "text/unicode.h"

qxClassID qxArray::_get_class_id_non_trivial() const noexcept {
    return classWord_ <= qxOBJECT_CLASS ? static_cast<qxClassID>(classWord_) : qxOBJECT_CLASS;
}

qxClassID qxGetClassID(const qxArray* array) { return array->_get_class_id_non_trivial(); }

const char* qxGetClassName(qxClassID classId) { return qx::classInfo(static_cast<std::uint64_t>(classId)).name; }

std::size_t qxGetNumberOfElements(const qxArray* array) { return qx::extentProduct(qx::shapeOf(array), 0); }

bool qxIsEmpty(const qxArray* array) { return qxGetNumberOfElements(array) == 0; }

std::size_t qxGetM(const qxArray* array) { return array->get_dimensions()[0]; }

std::size_t qxGetN(const qxArray* array) { return qx::extentProduct(qx::shapeOf(array), 1); }

std::size_t qxGetElementSize(const qxArray* array) {
    const qxClassID classId = qxGetClassID(array);
    if (classId == qxUNKNOWN_CLASS || qx::hasNumericStorage(classId)) {
        return qx::classInfo(classId).elementSize;
    }
    return sizeof(void*);
}

bool qxIsSparse(const qxArray* array) { return array->isSparse(); }

bool qxIsComplex(const qxArray* array) { return array->hasComplexFlag() && array->imagData() != nullptr; }

std::string qxGetString(const qxArray* array) {
    if (array->classWord() != qxCHAR_CLASS || array->realData() == nullptr) {
        return {};
    }
    return text::utf8FromUtf16({static_cast<const char16_t*>(array->realData()), qxGetNumberOfElements(array)});
}
