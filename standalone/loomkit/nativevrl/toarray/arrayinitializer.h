#pragma once

#include "toarray/javakind.h"
#include "toarray/propertyspecifier.h"

namespace nativevrl::JConvert {

/// The Java data of an array to be made, as a specifier whose properties are derived from the data when they are first
/// asked for. Used once, on the stack; the reader and both objects are borrowed and must outlive it. Either object may
/// be null.
class JNVArrayInitializer : public JNVArrayPropertySpecifier {
public:
    JNVArrayInitializer(JavaKindReader& kindOf, jobject real, jobject imaginary)
        : kindOf_(&kindOf), real_(real), imaginary_(imaginary) {}

    /// Extents by nesting level, outermost first: the largest that either part has at each level.
    const std::vector<unsigned>& getDimensions() override;
    bool hasDimensions() override { return true; }
    const IMapFunction<unsigned, unsigned>& getNestingOrder() override;
    /// Gathers the field names, too, when the class is that of a struct.
    qxClassID getClassID() override;
    bool hasClassID() override { return true; }
    qxComplexity getComplexity() override { return imaginary_ != nullptr ? qxCOMPLEX : qxREAL; }
    bool hasComplexity() override { return true; }

    /// Whether the dimensions are the data's own and each part has a value for every element, as far as can be told
    /// before the data is walked.
    bool isBox();

    virtual bool isDimensionDerived() { return true; }
    virtual bool isClassDerived() { return true; }

    JNIEnv* env() const noexcept { return kindOf_->env(); }
    JavaKindReader& kindOf() const noexcept { return *kindOf_; }
    jobject real() const noexcept { return real_; }
    jobject imaginary() const noexcept { return imaginary_; }

private:
    void deriveDimensions();
    qxClassID deriveClass();

    JavaKindReader* kindOf_;
    jobject real_;
    jobject imaginary_;
    bool dimensionsDecided_ = false;
    std::vector<unsigned> decidedDimensions_;
    bool isBox_ = false;
    bool classDecided_ = false;
    qxClassID decidedClass_ = qxUNKNOWN_CLASS;
    MDimensionNestingOrder nativeOrder_;
    JavaDimensionNestingOrder javaOrder_;
};

/// The same data with what a caller states before it. The specifier is borrowed.
class JNVSpecifiedArrayInitializer : public JNVArrayInitializer {
public:
    JNVSpecifiedArrayInitializer(const JNVArrayInitializer& data, JNVArrayPropertySpecifier& stated)
        : JNVArrayInitializer(data), stated_(&stated) {}

    const std::vector<unsigned>& getDimensions() override;
    const IMapFunction<unsigned, unsigned>& getNestingOrder() override;
    qxClassID getClassID() override;
    qxComplexity getComplexity() override;
    bool isDimensionDerived() override { return !stated_->hasDimensions(); }
    bool isClassDerived() override { return !stated_->hasClassID(); }

private:
    JNVArrayPropertySpecifier* stated_;
};

}  // namespace nativevrl::JConvert
