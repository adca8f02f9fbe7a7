#include "cli/tools/style_options.h"

#include "text/letter_case.h"

#include <algorithm>

namespace framewright {

std::string standInNote(CaptionStyle const& style, FontRegistry const& fonts)
{
    auto const standIn = fonts.find(style.fontName).substitute;
    return standIn ? style.fontName + " is not installed; " + *standIn + " stands in for it." : "";
}

std::vector<std::string> missingLetters(std::string const& words, CaptionStyle const& style,
                                        FontRegistry const& fonts)
{
    if (std::ranges::all_of(words, [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return {}; // The usual case, and finding capitals is slow.
    return fonts.lettersWithoutFont(
        style.uppercase ? capitals(QString::fromStdString(words)).toStdString() : words);
}

std::string missingLettersNote(std::vector<std::string> const& letters)
{
    if (letters.empty())
        return {};
    std::string list;
    for (std::string const& letter : letters)
        list += (list.empty() ? "" : ", ") + letter;
    return letters.size() == 1
               ? "No installed font has the letter " + list + "; a box stands for it."
               : "No installed font has the letters " + list + "; boxes stand for them.";
}

StyleChanges styleChanges(ToolArgs const& args)
{
    StyleChanges changes;
    changes.fontName = args.find(StyleOption::font);
    changes.textColor = args.find(StyleOption::color);
    changes.uppercase = args.find(StyleOption::uppercase);
    addStyleNumber(changes, args, StyleOption::size, &CaptionStyle::fontSize);
    return changes;
}

void addStyleNumber(StyleChanges& changes, ToolArgs const& args, Param<Number> const& param,
                    float CaptionStyle::*field)
{
    if (auto const value = args.find(param))
        changes.numbers.push_back({param.name, field, *value});
}

} // namespace framewright
