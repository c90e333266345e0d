#pragma once

#include "layout/dimensionmaps.h"
#include "qx/qx.h"

#include <jni.h>

#include <string>
#include <vector>

namespace nativevrl::JConvert {

/// The properties that a caller states of an array to be made: dimensions, class, complexity. What is not stated is
/// left to the data, or to the defaults of a real double array. Dimensions are listed by nesting level, outermost
/// first; getNestingOrder tells which native dimension each of them is.
class JNVArrayPropertySpecifier {
public:
    /// States nothing.
    JNVArrayPropertySpecifier() = default;
    /// States a class (0 leaves it open) and a complexity.
    JNVArrayPropertySpecifier(qxClassID classId, qxComplexity complexity);
    /// States dimensions as well, copied as they are: a negative one becomes huge and is refused at creation.
    /// Throws tether::NullPointerException for a null array, tether::OutOfMemoryException when it can't be pinned.
    JNVArrayPropertySpecifier(JNIEnv* env, jintArray dimensions, qxClassID classId, qxComplexity complexity);
    JNVArrayPropertySpecifier(const JNVArrayPropertySpecifier&) = default;
    JNVArrayPropertySpecifier& operator=(const JNVArrayPropertySpecifier&) = default;

    virtual ~JNVArrayPropertySpecifier() = default;
    virtual const std::vector<unsigned>& getDimensions() { return dimensions_; }
    virtual bool hasDimensions() { return dimensionsSpecified_; }
    virtual const IMapFunction<unsigned, unsigned>& getNestingOrder();
    virtual qxClassID getClassID() { return classId_; }
    virtual bool hasClassID() { return classId_ != qxUNKNOWN_CLASS; }
    virtual qxComplexity getComplexity() { return complexity_; }
    virtual bool hasComplexity() { return complexitySpecified_; }

    /// Names of the fields of a struct array, modified UTF-8; empty unless a struct class was derived.
    const std::vector<std::string>& fieldNames() const noexcept { return fieldNames_; }
    void addFieldName(const char* name) { fieldNames_.emplace_back(name); }

private:
    std::vector<unsigned> dimensions_;
    bool dimensionsSpecified_ = false;
    qxClassID classId_ = qxUNKNOWN_CLASS;
    qxComplexity complexity_ = qxREAL;
    bool complexitySpecified_ = false;
    MDimensionNestingOrder nativeOrder_;
    JavaDimensionNestingOrder javaOrder_;
    std::vector<std::string> fieldNames_;
};

}  // namespace nativevrl::JConvert
