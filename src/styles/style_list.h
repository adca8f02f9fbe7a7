#pragma once

#include "model/style.h"
#include "sync/file_form.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace framewright {

/// A larger file of styles is refused, so that reading it causes no noticeable pause.
inline constexpr std::uintmax_t largestStyleFile = 8 << 20;

/// Saved styles in their order, and which of them is the default: the content of a workspace's
/// caption-styles.json and text-styles.json.
struct StyleList {
    std::vector<CaptionStyle> styles;
    std::optional<Id> defaultID;

    /// The stored bytes: UTF-8 JSON, indented, keys sorted.
    std::string data() const;

    bool operator==(StyleList const&) const = default;
};

/// Whether two names differ in nothing but case; such styles can't be told apart by name.
bool isSameName(std::string const& a, std::string const& b);

/// Reads the stored form. Notes values out of range, duplicate ids and unknown keys. Throws
/// DocumentError.
Decoded<StyleList> decodeStyleList(std::string_view data);

/// The styles alone, as an array in one line, and back. Throws DocumentError.
std::string encodeStyleArray(std::vector<CaptionStyle> const& styles);
std::vector<CaptionStyle> decodeStyleArray(std::string_view data);

/// Merges two versions that both started from `base`. Of each style the side that changed it wins,
/// ours when both did; one that a side removed is gone unless the other changed it. The order is
/// theirs, with what is new in ours at the end.
StyleList merged(StyleList const& base, StyleList const& ours, StyleList const& theirs);

} // namespace framewright
