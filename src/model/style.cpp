#include "model/style.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace framewright {

namespace {

constexpr StyleRange ranges[] = {
    {"fontSize", &CaptionStyle::fontSize, smallestFont, largestFont},
    {"letterSpacing", &CaptionStyle::letterSpacing, -20, 100},
    {"maxWidthFraction", &CaptionStyle::maxWidthFraction, 0.1f, 1},
    {"cornerRadius", &CaptionStyle::cornerRadius, 0, 400},
    {"padding", &CaptionStyle::padding, 0, 200},
    {"shadowOpacity", &CaptionStyle::shadowOpacity, 0, 1},
    {"shadowRadius", &CaptionStyle::shadowRadius, 0, 100},
    {"strokeWidth", &CaptionStyle::strokeWidth, 0, 60},
};

struct ColorField {
    char const* key;
    RGBAColor CaptionStyle::*member;
};

constexpr ColorField colorFields[] = {
    {"textColor", &CaptionStyle::textColor},
    {"backgroundColor", &CaptionStyle::backgroundColor},
    {"strokeColor", &CaptionStyle::strokeColor},
};

struct ColorPart {
    char const* key;
    double RGBAColor::*member;
};

constexpr ColorPart colorParts[] = {
    {"red", &RGBAColor::red},
    {"green", &RGBAColor::green},
    {"blue", &RGBAColor::blue},
    {"alpha", &RGBAColor::alpha},
};

std::string numberText(float value)
{
    std::array<char, 32> digits{};
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return {digits.data(), end};
}

/// Clamps a value to its range and reports the change. `field` makes the value's name only when
/// needed: `status` checks the styles of whole projects.
template <class T, class Field>
void fit(T& value, T least, T most, T fallback, Field const& field,
         std::vector<std::string>& changes)
{
    if (value >= least && value <= most)
        return;
    T const before = value;
    value = std::isnan(before) ? fallback : std::clamp(before, least, most);
    changes.push_back(field() + " is " + numberText(static_cast<float>(least)) + " to " +
                      numberText(static_cast<float>(most)) + "; " +
                      numberText(static_cast<float>(before)) + " was changed to " +
                      numberText(static_cast<float>(value)) + ".");
}

} // namespace

std::span<StyleRange const> styleRanges()
{
    return ranges;
}

std::string CaptionStyle::featureSummary() const
{
    struct Feature {
        bool isOn;
        char const* name;
    };
    std::string summary;
    for (Feature const& feature :
         {Feature{backgroundEnabled, "Box"}, Feature{shadowEnabled, "Shadow"},
          Feature{outlineEnabled, "Outline"}, Feature{uppercase, "Caps"}}) {
        if (feature.isOn)
            summary += (summary.empty() ? "" : " · ") + std::string(feature.name);
    }
    return summary;
}

NormalizedStyle normalized(CaptionStyle style)
{
    NormalizedStyle result{std::move(style), {}};
    CaptionStyle& fitted = result.style;
    CaptionStyle const usual;
    if (fitted.name.empty()) {
        fitted.name = "Untitled";
        result.changes.push_back("A style has no name; it was named Untitled.");
    }
    if (fitted.fontName.empty()) {
        fitted.fontName = "system:semibold";
        result.changes.push_back("fontName of " + fitted.name +
                                 " is empty; system:semibold is used.");
    }
    for (StyleRange const& range : ranges)
        fit(
            fitted.*range.member, range.least, range.most, usual.*range.member,
            [&] { return range.key + (" of " + fitted.name); }, result.changes);
    for (ColorField const& color : colorFields) {
        for (ColorPart const& part : colorParts)
            fit(
                fitted.*color.member.*part.member, 0.0, 1.0, usual.*color.member.*part.member,
                [&] { return std::string(color.key) + "." + part.key + " of " + fitted.name; },
                result.changes);
    }
    return result;
}

} // namespace framewright
