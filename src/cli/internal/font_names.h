#pragma once

#include <span>
#include <string>
#include <string_view>

namespace framewright {

/// The font name that a style stores for what a user calls a font:
///
///     Strong, Bebas Neue, Strong (Bebas Neue)    an offered one, by style, family or both
///     system:bold, mono:medium                   those of the system
///     DejaVuSans-Bold                            any of `installed`, which are PostScript names
///
/// in any case. Throws ToolError for others, with suggestions.
std::string fontNamed(std::string_view text, std::span<std::string const> installed);

} // namespace framewright
