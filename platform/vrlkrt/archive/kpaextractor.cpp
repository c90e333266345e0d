#include "vrlkrt/kpaextractor.h"

#include "vrlkrt/archive/archive.h"
#include "vrlkrt/archive/archivesource.h"
#include "vrlkrt/archive/archivestream.h"
#include "vrlkrt/archive/componentcache.h"
#include "vrlkrt/archive/extraction.h"
#include "vrlkrt/archive/platformpath.h"
#include "vrlkrt/archive/printable.h"

#include "vrlbase/exceptions.h"
#include "vrlbase/operation.h"
#include "vrlbase/runtime.h"
#include "vrlkrt/vrlkrt.h"

#include <boost/make_shared.hpp>

#include <array>
#include <istream>
#include <mutex>
#include <new>
#include <utility>

using Norvane::vrl::vrlBaseException;
using vrlbase::operation;

namespace vrlkrt {

KpaExtractor::KpaExtractor() = default;
KpaExtractor::KpaExtractor(boost::shared_ptr<KpaSource> source) : source_(std::move(source)) {}

const boost::shared_ptr<KpaSource>& KpaExtractor::source() const { return source_; }

namespace {

class NoSource : public KpaSource {
public:
    explicit NoSource(std::string component) : component_(std::move(component)) {}

    std::shared_ptr<const std::string> bytes() override {
        throw vrlBaseException("There is no archive of the component" +
                               (component_.empty() ? std::string() : " '" + printable(component_, longestQuote) + "'") +
                               ".");
    }

private:
    std::string component_;
};

/// Takes its stream's bytes at the first call and keeps them, since a stream gives them only once.
class StreamSource : public KpaSource {
public:
    explicit StreamSource(boost::shared_ptr<std::istream> stream) : stream_(std::move(stream)) {}

    std::shared_ptr<const std::string> bytes() override {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!bytes_) {
            const auto* inMemory = dynamic_cast<const ArchiveStream*>(stream_.get());
            bytes_ = inMemory == nullptr ? nullptr : inMemory->unreadBlock();
            if (!bytes_) {
                bytes_ = std::make_shared<const std::string>(readStream());
            }
            stream_.reset();
        }
        return bytes_;
    }

private:
    std::string readStream() {
        if (!stream_) {
            throw vrlBaseException("The stream of the archive is null.");
        }
        const std::uint64_t limit = ArchiveLimits().archiveBytes;
        std::string bytes;
        std::array<char, 65536> block;
        while (stream_->read(block.data(), block.size()) || stream_->gcount() > 0) {
            bytes.append(block.data(), static_cast<std::size_t>(stream_->gcount()));
            if (bytes.size() > limit) {
                throw vrlBaseException("The archive has more than the " + std::to_string(limit) +
                                       " bytes that are allowed.");
            }
        }
        if (stream_->bad()) {
            throw vrlBaseException("The stream of the archive failed after " + std::to_string(bytes.size()) +
                                   " bytes.");
        }
        return bytes;
    }

    std::mutex mutex_;
    boost::shared_ptr<std::istream> stream_;
    std::shared_ptr<const std::string> bytes_;
};

template <typename Place>
boost::shared_ptr<vrlExtractedComponent> placeComponent(const KpaExtractor& extractor, const Place& place) {
    if (!extractor.source()) {
        throw vrlBaseException("There is no archive of the component.");
    }
    const ComponentArchive archive(extractor.source()->bytes());
    archive.requireAbi();
    static_cast<void>(archive.hostLibrary());  // refuses an archive of other platforms before anything is written
    return boost::make_shared<vrlExtractedComponent>(place(archive));
}

/// A factory that gives the archive of an extractor to `place`, and lets out no exception but vrlBaseException.
template <typename Place>
vrlExtractedComponentFactory makeFactory(KpaExtractor extractor, Place place) {
    return [extractor = std::move(extractor), place = std::move(place)] {
        try {
            return placeComponent(extractor, place);
        } catch (const vrlBaseException&) {
            throw;
        } catch (const std::bad_alloc&) {
            throw vrlBaseException::outOfMemory();
        } catch (const std::exception& error) {
            throw vrlBaseException(std::string("The component can't be extracted: ") + error.what() + ".");
        }
    };
}

}  // namespace
}  // namespace vrlkrt

vrlkrt::KpaExtractor vrlMakeAlwaysFailExtractor(const char* component) {
    return operation(
        [&] { return vrlkrt::KpaExtractor(boost::make_shared<vrlkrt::NoSource>(component ? component : "")); });
}

vrlkrt::KpaExtractor vrlMakeKpaStreamExtractor(boost::shared_ptr<std::istream> archive) {
    return operation(
        [&] { return vrlkrt::KpaExtractor(boost::make_shared<vrlkrt::StreamSource>(std::move(archive))); });
}

boost::shared_ptr<std::istream> vrlGetKpaStreamFromArraySrc(char* bytes, int length) {
    return operation([&]() -> boost::shared_ptr<std::istream> {
        if (length < 0 || (bytes == nullptr && length > 0)) {
            throw vrlBaseException("The archive has no bytes, or a length below 0: " + std::to_string(length) + ".");
        }
        auto block = length == 0 ? std::make_shared<const std::string>()
                                 : std::make_shared<const std::string>(bytes, static_cast<std::size_t>(length));
        return boost::make_shared<vrlkrt::ArchiveStream>(std::move(block));
    });
}

vrlExtractedComponentFactory vrlMakeComponentCacheExtractedComponentFactory(vrlkrt::KpaExtractor extractor) {
    return operation([&] {
        return vrlkrt::makeFactory(std::move(extractor), [](const vrlkrt::ComponentArchive& archive) {
            return vrlkrt::placeInCache(archive, vrlkrt::chooseCache(vrlGetCacheDirectories()));
        });
    });
}

vrlExtractedComponentFactory vrlMakeDirectoryExtractedComponentFactory(vrlkrt::KpaExtractor extractor,
                                                                       const dsPathString_<dsMBCSSafeString>& folder) {
    return operation([&] {
        return vrlkrt::makeFactory(std::move(extractor),
                                   [path = vrlPlatformPath(folder)](const vrlkrt::ComponentArchive& archive) {
                                       return vrlkrt::placeInFolder(archive, path);
                                   });
    });
}
