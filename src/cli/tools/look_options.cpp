#include "cli/tools/look_options.h"

#include "text/letter_case.h"

#include <algorithm>
#include <charconv>

namespace framewright {

namespace {

std::string numberText(float number)
{
    char digits[32];
    auto const end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    return {digits, end};
}

} // namespace

void setLookNumber(ToolArgs const& args, Param<Number> const& param, CaptionStyle& style,
                   float CaptionStyle::*member)
{
    auto const given = args.find(param);
    if (!given)
        return;
    auto const& range = *std::ranges::find(styleRanges(), member, &StyleRange::member);
    auto const number = static_cast<float>(*given);
    if (!(number >= range.least && number <= range.most))
        throw ToolError(param.name + " must be " + numberText(range.least) + " to " +
                        numberText(range.most) +
                        (member == &CaptionStyle::fontSize ? " points." : "."));
    style.*member = number;
}

std::string standInNote(CaptionStyle const& style, FontRegistry const& fonts)
{
    auto const standIn = fonts.find(style.fontName).substitute;
    return standIn ? style.fontName + " is not installed; " + *standIn + " stands in for it." : "";
}

std::vector<std::string> missingLetters(std::string const& words, CaptionStyle const& style,
                                        FontRegistry const& fonts)
{
    if (std::ranges::all_of(words, [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return {}; // Most are, and capitals take their time.
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

bool applyLookOptions(ToolArgs const& args, CaptionStyle& style)
{
    if (auto const name = args.find(LookOption::font))
        style.fontName = *name;
    setLookNumber(args, LookOption::size, style, &CaptionStyle::fontSize);
    if (auto const given = args.find(LookOption::color))
        style.textColor = *given;
    if (auto const given = args.find(LookOption::uppercase))
        style.uppercase = *given;
    return args.has(LookOption::font) || args.has(LookOption::size) ||
           args.has(LookOption::color) || args.has(LookOption::uppercase);
}

} // namespace framewright
