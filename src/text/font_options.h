#pragma once

#include <span>
#include <string_view>

namespace framewright {

/// A font offered for captions and texts.
struct FontOption {
    std::string_view displayName; ///< "Strong (Bebas Neue)"
    std::string_view fontName;    ///< As styles store it: "BebasNeue-Regular".
};

/// In the order they are offered. The first sixteen come with the application.
std::span<FontOption const> fontOptions();

/// The weights that may follow "system:" and "mono:", lightest first.
std::span<std::string_view const> fontWeightNames();

} // namespace framewright
