#pragma once

/// A path that keeps itself in a normal form: separators are backslashes, doubled ones fold (apart from a
/// leading pair), and white space at both ends goes. The text is in the local code page, and no rule takes
/// the second byte of a two-byte character for a separator or for white space.

#include "basix/basix.h"
#include "pathkit/mbcsunits.h"

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

/// Brings strings of type S to a normal form.
template <typename S>
class dsStringNormalizer {
public:
    virtual ~dsStringNormalizer() = default;
    /// Puts `length` bytes of `text` into the string and normalises it.
    virtual void assign(S& string, const char* text, std::size_t length) = 0;
    /// Normalises the string in place.
    virtual void normalize(S& string) = 0;
};

/// Kind of text whose characters may take one byte or two.
struct dsMBCSSafeString {};

template <typename S>
class dsWellFormedPathNormalizer;

/// A path with the normaliser that every change goes through. Copies share the normalisers.
template <typename T>
class dsPathString_ {
public:
    using Normalizer = dsStringNormalizer<dsPathString_>;

    /// While one lives the string has no normaliser, so that a change made by the normaliser starts no other
    /// normalisation. Gives the normaliser back when it goes, also when an exception passes.
    class Suspension {
    public:
        explicit Suspension(dsPathString_& string) : string_(string) { normalizer_.swap(string_.normalizer_); }
        ~Suspension() { normalizer_.swap(string_.normalizer_); }
        Suspension(const Suspension&) = delete;
        Suspension& operator=(const Suspension&) = delete;

        const boost::shared_ptr<Normalizer>& suspended() const { return normalizer_; }

    private:
        dsPathString_& string_;
        boost::shared_ptr<Normalizer> normalizer_;
    };

    /// `text` ends at its first NUL and is copied.
    explicit dsPathString_(const char* text) {
        normalizer_ = defaultNormalizer();
        const Suspension suspension(*this);
        suspension.suspended()->assign(*this, text, std::strlen(text));
    }

    const char* c_str() const noexcept { return text_.c_str(); }
    const std::string& str() const noexcept { return text_; }
    std::size_t length() const noexcept { return text_.size(); }

    void assign(const char* text, std::size_t length) {
        if (normalizer_) {
            const boost::shared_ptr<Normalizer> current = normalizer_;
            current->assign(*this, text, length);
        } else {
            text_.assign(text, length);
        }
    }

    /// Sets one byte. Throws std::out_of_range past the end, as erase does.
    void setByte(std::size_t position, char byte) {
        checkPosition(position, text_.size() - 1);
        text_[position] = byte;
        changed();
    }

    void erase(std::size_t position, std::size_t count) {
        checkPosition(position, text_.size());
        text_.erase(position, count);
        changed();
    }

private:
    const boost::shared_ptr<Normalizer>& defaultNormalizer() {
        if (!defaultNormalizer_) {
            defaultNormalizer_ = boost::make_shared<dsWellFormedPathNormalizer<dsPathString_>>();
        }
        return defaultNormalizer_;
    }

    void checkPosition(std::size_t position, std::size_t last) const {
        if (position > last || text_.empty()) {
            throw std::out_of_range("invalid string position");
        }
    }

    void changed() {
        if (normalizer_) {
            const boost::shared_ptr<Normalizer> current = normalizer_;
            current->normalize(*this);
        }
    }

    std::string text_;
    boost::shared_ptr<Normalizer> normalizer_;
    boost::shared_ptr<Normalizer> defaultNormalizer_;
};

/// The normal form of a path. Stateless.
template <typename S>
class dsWellFormedPathNormalizer : public dsStringNormalizer<S> {
public:
    void assign(S& string, const char* text, std::size_t length) override {
        {
            const typename S::Suspension suspension(string);
            string.assign(text, length);
        }
        normalize(string);
    }

    void normalize(S& string) override {
        const typename S::Suspension suspension(string);
        unifySeparators(string);
        foldDoubledSeparators(string);
        dropLeadingBlanks(string);
        dropTrailingBlanks(string);
    }

private:
    static constexpr auto isSeparator = [](std::size_t, dsTextUnit unit) { return dsIsSeparatorUnit(unit); };
    static constexpr auto isText = [](std::size_t, dsTextUnit unit) { return !dsIsBlankUnit(unit); };

    static void unifySeparators(S& string) {
        if (std::strchr(string.c_str(), '/') == nullptr) {
            return;
        }
        std::size_t position = dsFindUnit(string.str(), 0, isSeparator);
        while (position != std::string::npos) {
            string.setByte(position, '\\');
            position = dsFindUnit(string.str(), position + 1, isSeparator);
        }
    }

    static void foldDoubledSeparators(S& string) {
        if (std::strstr(string.c_str(), "\\\\") == nullptr || string.length() <= 1) {
            return;
        }
        const auto isPair = [&string](std::size_t position, dsTextUnit unit) {
            return position > 0 && dsIsSeparatorUnit(unit) && position + 1 < string.length() &&
                   dsIsSeparatorUnit(dsUnitAt(string.str(), position + 1));
        };
        // A pair at the very start is none: it stays.
        std::size_t position = dsFindUnit(string.str(), 0, isPair);
        while (position < string.length()) {
            string.erase(position, 1);
            position = dsFindUnit(string.str(), position, isPair);
        }
    }

    static void dropLeadingBlanks(S& string) {
        const std::size_t first = dsFindUnit(string.str(), 0, isText);
        if (first != 0 && string.length() != 0) {
            string.erase(0, first == std::string::npos ? string.length() : first);
        }
    }

    static void dropTrailingBlanks(S& string) {
        if (string.length() == 0 || std::strchr(" \t\v\b\n\r\f", string.str().back()) == nullptr) {
            return;
        }
        std::size_t last = std::string::npos;
        dsFindUnit(string.str(), 0, [&last](std::size_t position, dsTextUnit unit) {
            last = dsIsBlankUnit(unit) ? last : position;
            return false;
        });
        if (last == std::string::npos) {
            return;
        }
        if (utIsMultiByteLead(static_cast<unsigned char>(string.str()[last]))) {
            ++last;
        }
        if (last + 1 < string.length()) {
            string.erase(last + 1, std::string::npos);
        }
    }
};
