#include "editor/commands/style_commands.h"

#include <algorithm>

namespace framewright {

namespace {

// The values of an effect that is switched on without any. Points.
constexpr float usualPadding = 20;
constexpr float usualRadius = 16;
constexpr float usualShadowOpacity = 0.6f;
constexpr float usualShadowRadius = 12;
constexpr float usualOutlineWidth = 6;

void setUsual(float& value, float usual)
{
    if (value == 0)
        value = usual;
}

bool hasNumber(StyleChanges const& changes, float CaptionStyle::*field)
{
    return std::ranges::find(changes.numbers, field, &StyleNumber::field) != changes.numbers.end();
}

void switchEffects(CaptionStyle& style, StyleChanges const& changes)
{
    using Style = CaptionStyle;
    bool const hasBoxPart = changes.boxColor || hasNumber(changes, &Style::cornerRadius) ||
                            hasNumber(changes, &Style::padding);
    bool const hadBox = style.backgroundEnabled;
    style.backgroundEnabled = changes.box.value_or(hadBox || hasBoxPart);
    if (style.backgroundEnabled && !hadBox) {
        setUsual(style.padding, usualPadding);
        setUsual(style.cornerRadius, usualRadius);
    }
    bool const hasShadowPart =
        hasNumber(changes, &Style::shadowOpacity) || hasNumber(changes, &Style::shadowRadius);
    bool const hadShadow = style.shadowEnabled;
    style.shadowEnabled = changes.shadow.value_or(hadShadow || hasShadowPart);
    if (style.shadowEnabled && !hadShadow) {
        setUsual(style.shadowOpacity, usualShadowOpacity);
        setUsual(style.shadowRadius, usualShadowRadius);
    }
    bool const hasOutlinePart = changes.outlineColor || hasNumber(changes, &Style::strokeWidth);
    bool const hadOutline = style.outlineEnabled;
    style.outlineEnabled = changes.outline.value_or(hadOutline || hasOutlinePart);
    if (style.outlineEnabled && !hadOutline)
        setUsual(style.strokeWidth, usualOutlineWidth);
}

std::optional<Refusal> nameRefusal(StyleStore const& store, CaptionStyle const& named)
{
    constexpr std::size_t longestName = 200;
    bool const isBlank = named.name.find_first_not_of(" \t\r\n") == std::string::npos;
    if (isBlank || named.name.size() > longestName ||
        named.name.find_first_of("\r\n") != std::string::npos)
        return Refusal{Reason::styleNameUnusable, {}, {}, double(longestName)};
    CaptionStyle const* const other = store.style(named.name);
    if (other && other->id != named.id)
        return Refusal{Reason::styleNameTaken, Subject::named(other->name)};
    return std::nullopt;
}

} // namespace

bool StyleChanges::isEmpty() const
{
    return !fontName && !textColor && !uppercase && !box && !boxColor && !shadow && !outline &&
           !outlineColor && numbers.empty();
}

Outcome<CaptionStyle> changed(CaptionStyle style, StyleChanges const& changes)
{
    style.fontName = changes.fontName.value_or(style.fontName);
    style.textColor = changes.textColor.value_or(style.textColor);
    style.uppercase = changes.uppercase.value_or(style.uppercase);
    switchEffects(style, changes);
    style.backgroundColor = changes.boxColor.value_or(style.backgroundColor);
    style.strokeColor = changes.outlineColor.value_or(style.strokeColor);
    for (auto const& [name, field, value] : changes.numbers) {
        auto const& range = *std::ranges::find(styleRanges(), field, &StyleRange::member);
        auto const number = static_cast<float>(value);
        if (!(number >= range.least && number <= range.most))
            return Refusal{Reason::outOfRange,
                           field == &CaptionStyle::fontSize ? Subject::setting(Setting::fontSize)
                                                            : Subject::named(name),
                           TimeRange{range.least, range.most}, value};
        style.*field = number;
    }
    return style;
}

Outcome<SavedStyle> saveStyle(StyleStore& store, StyleToSave const& wanted)
{
    CaptionStyle const* const known = wanted.known ? store.style(*wanted.known) : nullptr;
    CaptionStyle style = wanted.startFrom ? *wanted.startFrom
                         : known          ? *known
                                          : store.defaultStyle();
    style.id = known ? known->id : Id::random();
    style.name = wanted.newName ? *wanted.newName : known ? known->name : wanted.name;
    if (!known || style.name != known->name) {
        if (auto const refusal = nameRefusal(store, style))
            return *refusal;
    }
    auto const made = changed(std::move(style), wanted.changes);
    if (!made)
        return made.refusal();
    SavedStyle saved{*made, !known, normalized(*made).changes};
    store.upsert(*made);
    saved.style = *store.style(made->id);
    return saved;
}

} // namespace framewright
