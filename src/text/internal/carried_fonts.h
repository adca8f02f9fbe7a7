#pragma once

#include <span>
#include <string_view>

namespace framewright {

/// A font that comes with the application.
struct CarriedFont {
    std::string_view fontName; ///< As styles name it.
    std::string_view file;     ///< In the folder of the carried fonts, without ".ttf".
};

/// All of them. A file that has two names stands here twice.
std::span<CarriedFont const> carriedFonts();

/// What a font looks like, in so far as another can stand in for it.
enum class FontKind { sans, round, condensed, poster, serif, didone, mono, typewriter, script };

struct FontTraits {
    FontKind kind = FontKind::sans;
    int weight = 400; ///< As in OpenType: 100 to 900.
};

/// The look that a font's name promises, for fonts that may not be there.
FontTraits impliedTraits(std::string_view fontName);

/// The families that can stand in for a kind, the nearest first. Further ones are as near as any.
std::span<std::string_view const> similarFamilies(FontKind kind);

} // namespace framewright
