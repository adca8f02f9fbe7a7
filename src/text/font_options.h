#pragma once

#include <span>
#include <string_view>

namespace framewright {

/// A font that is offered for captions and texts.
struct FontOption {
    std::string_view displayName; ///< What people pick it by: "Strong (Bebas Neue)".
    std::string_view fontName;    ///< What a style stores: "BebasNeue-Regular".
};

/// Those fonts, in the order they are offered. The first sixteen are carried by the application.
std::span<FontOption const> fontOptions();

/// The weights that "system:" and "mono:" may be followed by, from the lightest on.
std::span<std::string_view const> fontWeightNames();

} // namespace framewright
