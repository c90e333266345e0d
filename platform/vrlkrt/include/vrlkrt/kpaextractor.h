#pragma once

#include <boost/shared_ptr.hpp>

namespace vrlkrt {

/// How an extractor gets at its archive. Implemented inside the runtime.
class KpaSource;

/// A way of getting at an archive's content. A value: copies stand for the same archive. A default-constructed
/// one stands for none and fails when it is used.
class KpaExtractor {
public:
    KpaExtractor();
    explicit KpaExtractor(boost::shared_ptr<KpaSource> source);

    const boost::shared_ptr<KpaSource>& source() const;

private:
    boost::shared_ptr<KpaSource> source_;
};

}  // namespace vrlkrt
