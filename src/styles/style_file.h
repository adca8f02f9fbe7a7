#pragma once

#include "model/style.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace framewright {

/// No file of saved looks is larger: it is read at once, without being felt.
inline constexpr std::uintmax_t largestStyleFile = 8 << 20;

/// Saved looks in their order, and which of them is the default: what a style store keeps, and the
/// content of a workspace's caption-styles.json and text-styles.json.
struct StyleFile {
    std::vector<CaptionStyle> styles;
    std::optional<Id> defaultID;

    /// The stored bytes: UTF-8 JSON, indented, keys sorted.
    std::string data() const;

    bool operator==(StyleFile const&) const = default;
};

/// Saved looks that were read, and a sentence for everything in them that was not taken as it
/// stands: values out of range, ids that stand twice, keys that are not known.
struct DecodedStyles {
    StyleFile file;
    std::vector<std::string> notes;
};

/// Whether two looks can't be told apart by their names: those differ in nothing but case.
bool isSameName(std::string const& a, std::string const& b);

/// Reads the stored form. Throws DocumentError.
DecodedStyles decodeStyles(std::string_view data);

/// The looks alone, as an array in one line, and back. Throws DocumentError.
std::string encodeStyleList(std::vector<CaptionStyle> const& styles);
std::vector<CaptionStyle> decodeStyleList(std::string_view data);

/// Brings together what two made of the same looks: of each look the side that changed it wins,
/// ours when both did. A look that one side removed is gone unless the other changed it. Theirs
/// gives the order; what is new in ours comes last.
StyleFile merged(StyleFile const& base, StyleFile const& ours, StyleFile const& theirs);

/// Saved looks could not be written. `what()` is the whole sentence.
class StyleFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What lies on disk after a save.
struct SavedStyles {
    StyleFile file;
    std::string bytes;
    std::vector<std::string> notes = {}; ///< What of another program's was not taken as it stood.
};

/// Writes looks atomically. `base` and `known` are what the file held when we last read or wrote
/// it; when somebody else has written it since, theirs is merged in first. A file that does not
/// decode is left alone. Makes the file's folder, but not the one that is in. Blocks until the disk
/// has the bytes. Any thread. Throws StyleFileError.
SavedStyles saveStyles(std::filesystem::path const& file, StyleFile const& base,
                       StyleFile const& ours, std::optional<std::string> const& known);

} // namespace framewright
