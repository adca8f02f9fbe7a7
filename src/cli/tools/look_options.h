#pragma once

#include "cli/tool.h"
#include "text/font_registry.h"

#include <string>
#include <vector>

namespace framewright {

// The options that say what a text is set in, of every command that takes them.

namespace LookOption {

inline Param<Font> const font{"font", "A font by its name, e.g. Strong or Bebas Neue.",
                              optionalParam};
inline Param<Number> const size{
    "size", "Font size in points at 1080 px width (8-240; 60-120 for titles).", optionalParam};
inline Param<Color> const color{"color", "Text color, #RRGGBB.", optionalParam};
inline Param<Flag> const uppercase{"uppercase", "Set in capitals.", optionalParam};

} // namespace LookOption

/// Changes what a look is set in as far as a command says so; whether it says anything. A size that
/// is none throws ToolError.
bool applyLookOptions(ToolArgs const& args, CaptionStyle& style);

/// A sentence that says which font stands in for the look's; empty when its own is there.
std::string standInNote(CaptionStyle const& style, FontRegistry const& fonts);

/// The letters that no font has of words in this look, the first ten, and a sentence that names
/// them; empty when all are there.
std::vector<std::string> missingLetters(std::string const& words, CaptionStyle const& style,
                                        FontRegistry const& fonts);
std::string missingLettersNote(std::vector<std::string> const& letters);

/// Reads a number of a look. Throws ToolError when it is out of range.
void setLookNumber(ToolArgs const& args, Param<Number> const& param, CaptionStyle& style,
                   float CaptionStyle::*member);

} // namespace framewright
