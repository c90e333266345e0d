#include "toarray/arrayinitializer.h"

#include "layout/leveltable.h"
#include "toarray/classification.h"
#include "toarray/compound.h"
#include "toarray/dimensions.h"

#include <algorithm>
#include <functional>
#include <numeric>

namespace nativevrl::JConvert {

const std::vector<unsigned>& JNVArrayInitializer::getDimensions() {
    if (!dimensionsDecided_) {
        deriveDimensions();
        dimensionsDecided_ = true;
    }
    return decidedDimensions_;
}

void JNVArrayInitializer::deriveDimensions() {
    const bool isChar = getClassID() == qxCHAR_CLASS;
    std::vector<unsigned>& dimensions = decidedDimensions_;
    dimensions.clear();
    std::size_t fewest = collectDimensions(kindOf(), dimensions, real_, isChar);
    if (getComplexity() == qxCOMPLEX) {
        fewest = std::min(fewest, collectDimensions(kindOf(), dimensions, imaginary_, isChar));
    }
    if (dimensions.empty() && (real_ != nullptr || imaginary_ != nullptr)) {
        dimensions.push_back(1);
    }
    isBox_ = fewest == std::accumulate(dimensions.begin(), dimensions.end(), std::size_t{1}, std::multiplies<>());
    javaOrder_ = JavaDimensionNestingOrder(static_cast<unsigned>(dimensions.size()));
}

bool JNVArrayInitializer::isBox() {
    static_cast<void>(getDimensions());
    return isBox_;
}

const IMapFunction<unsigned, unsigned>& JNVArrayInitializer::getNestingOrder() {
    if (useJavaDimensionOrder) {
        return javaOrder_;
    }
    return nativeOrder_;
}

qxClassID JNVArrayInitializer::getClassID() {
    if (!classDecided_) {
        decidedClass_ = deriveClass();
        classDecided_ = true;
    }
    return decidedClass_;
}

qxClassID JNVArrayInitializer::deriveClass() {
    if (real_ == nullptr && imaginary_ == nullptr) {
        return qxDOUBLE_CLASS;
    }
    qxClassID classId = qxUNKNOWN_CLASS;
    if (real_ != nullptr) {
        classId = classifyJavaObject(kindOf(), real_, true);
        if (classId == qxSTRUCT_CLASS) {
            gatherFieldNamesOfStruct(*this, real_);
        }
    }
    if (classId == qxUNKNOWN_CLASS && imaginary_ != nullptr) {
        classId = classifyJavaObject(kindOf(), imaginary_, true);
    }
    return classId;
}

const std::vector<unsigned>& JNVSpecifiedArrayInitializer::getDimensions() {
    return stated_->hasDimensions() ? stated_->getDimensions() : JNVArrayInitializer::getDimensions();
}

const IMapFunction<unsigned, unsigned>& JNVSpecifiedArrayInitializer::getNestingOrder() {
    return stated_->hasDimensions() ? stated_->getNestingOrder() : JNVArrayInitializer::getNestingOrder();
}

qxClassID JNVSpecifiedArrayInitializer::getClassID() {
    return stated_->hasClassID() ? stated_->getClassID() : JNVArrayInitializer::getClassID();
}

qxComplexity JNVSpecifiedArrayInitializer::getComplexity() {
    return stated_->hasComplexity() ? stated_->getComplexity() : JNVArrayInitializer::getComplexity();
}

}  // namespace nativevrl::JConvert
