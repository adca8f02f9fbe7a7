#pragma once

#include <span>
#include <string_view>

namespace framewright {

/// A font that comes with the application.
struct CarriedFont {
    std::string_view fontName; ///< As styles name it.
    std::string_view file;     ///< In the folder of the carried fonts, without ".ttf".
};

/// All of them. A file with two names appears twice.
std::span<CarriedFont const> carriedFonts();

/// The traits by which a substitute for a font is chosen.
enum class FontKind { sans, round, condensed, poster, serif, didone, mono, typewriter, script };

struct FontTraits {
    FontKind kind = FontKind::sans;
    int weight = 400; ///< As in OpenType: 100 to 900.
};

/// Guesses the traits of a font, which may be unavailable, from the words in its name.
FontTraits impliedTraits(std::string_view fontName);

/// Families to substitute for a kind, the most similar first.
std::span<std::string_view const> similarFamilies(FontKind kind);

} // namespace framewright
