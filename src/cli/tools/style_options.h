#pragma once

#include "cli/tool.h"
#include "editor/commands/style_commands.h"
#include "text/font_registry.h"

#include <string>
#include <vector>

namespace framewright {

// The options for the font of a text, shared by every command that has them.

namespace StyleOption {

inline Param<Font> const font{"font", "A font by its name, e.g. Strong or Bebas Neue.",
                              optionalParam};
inline Param<Number> const size{
    "size", "Font size in points at 1080 px width (8-240; 60-120 for titles).", optionalParam};
inline Param<Color> const color{"color", "Text color, #RRGGBB.", optionalParam};
inline Param<Flag> const uppercase{"uppercase", "Set in capitals.", optionalParam};

} // namespace StyleOption

/// The changes these options request.
StyleChanges styleChanges(ToolArgs const& args);

/// Adds the value of an option, if it was given.
void addStyleNumber(StyleChanges& changes, ToolArgs const& args, Param<Number> const& param,
                    float CaptionStyle::*field);

/// A sentence naming the font used in place of the style's; empty when the style's is installed.
std::string standInNote(CaptionStyle const& style, FontRegistry const& fonts);

/// The letters of `words` that no installed font has, the first ten, and a sentence naming them;
/// empty when there are none.
std::vector<std::string> missingLetters(std::string const& words, CaptionStyle const& style,
                                        FontRegistry const& fonts);
std::string missingLettersNote(std::vector<std::string> const& letters);

} // namespace framewright
