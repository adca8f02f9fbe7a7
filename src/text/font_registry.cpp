#include "text/font_registry.h"

#include "text/internal/carried_fonts.h"
#include "text/internal/emoji.h"
#include "text/internal/font_file.h"
#include "text/internal/installed_fonts.h"

#include <QFontDatabase>
#include <QStringList>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <mutex>
#include <unordered_map>

namespace framewright {

namespace {

/// Left to choose, Qt sets light Arabic and Hebrew in DejaVu Sans ExtraLight, which has neither.
QStringList const scriptFamilies{
    QStringLiteral("Noto Sans Arabic"),        QStringLiteral("Noto Sans Arabic UI"),
    QStringLiteral("Noto Sans Hebrew"),        QStringLiteral("Noto Sans Devanagari"),
    QStringLiteral("Noto Sans Devanagari UI"),
};

/// The family that supplies letters a carried font lacks, chosen to match its kind.
QString companionOf(QString const& family)
{
    switch (impliedTraits(family.toStdString()).kind) {
    case FontKind::serif:
    case FontKind::didone:
    case FontKind::poster:
        return QStringLiteral("Libre Baskerville");
    case FontKind::mono:
    case FontKind::typewriter:
        return QStringLiteral("JetBrains Mono");
    default:
        return QStringLiteral("Inter");
    }
}

/// Whether a character is visible: neither white space nor a format character.
bool isDrawn(char32_t letter)
{
    bool const isVariationSelector = (letter >= 0xFE00 && letter <= 0xFE0F) ||
                                     (letter >= 0xE0100 && letter <= 0xE01EF) ||
                                     (letter >= 0x180B && letter <= 0x180F) || letter == 0x034F;
    if (letter < 0x80 || isVariationSelector)
        return false; // ASCII needs no check: every font has it.
    switch (QChar::category(letter)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Space:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

} // namespace

/// Immutable after `load`, except for the caches.
struct FontRegistry::Fonts {
    /// Normalized, because fontconfig reports normalized paths.
    explicit Fonts(std::filesystem::path const& carriedFonts)
        : folder(std::filesystem::absolute(carriedFonts).lexically_normal())
    {
    }

    void load();
    Found resolve(std::string const& fontName) const;

    FontFace const* named(std::string const& fontName) const;
    FontFace const& nearest(FontTraits const& traits) const;
    FontFace const* nearestOfFamily(QString const& family, int weight) const;
    QFont fontOf(FontFace const& face) const;
    bool isFamily(QString const& family) const { return families.contains(family); }

    std::filesystem::path const folder;
    std::once_flag loading;

    std::map<std::string, FontFace> byName; ///< By PostScript name, and by the names styles use.
    std::multimap<QString, FontFace> families;
    std::vector<std::string> names;
    std::vector<Missing> missing;
    FontFace lastResort{.family = QStringLiteral("Sans Serif"), .style = {}};

    std::mutex guard; ///< Of the caches.
    std::unordered_map<std::string, Found> answers;
    std::unordered_map<char32_t, bool> hasLetter;
};

void FontRegistry::Fonts::load()
{
    std::map<std::string_view, Missing::Why> unusable;
    for (CarriedFont const& carried : carriedFonts()) {
        auto const file = folder / (std::string(carried.file) + ".ttf");
        std::error_code unreadable;
        if (!std::filesystem::exists(file, unreadable))
            unusable.emplace(carried.fontName, Missing::Why::absent);
        else if (!isWholeFontFile(file) ||
                 QFontDatabase::addApplicationFont(QString::fromStdString(file.string())) < 0)
            unusable.emplace(carried.fontName, Missing::Why::damaged);
    }

    InstalledFonts const installed = InstalledFonts::read();
    byName = installed.byPostScriptName;
    for (auto const& [name, face] : byName) {
        names.push_back(name);
        families.emplace(face.family, face);
    }
    for (CarriedFont const& carried : carriedFonts()) {
        auto const file = (folder / (std::string(carried.file) + ".ttf")).string();
        auto const face = installed.byFile.find(file);
        if (unusable.contains(carried.fontName) || face == installed.byFile.end())
            continue;
        byName.insert_or_assign(std::string(carried.fontName), face->second);
        if (byName.insert_or_assign(std::string(carried.file), face->second).second)
            names.push_back(std::string(carried.file));
        families.emplace(face->second.family, face->second);
    }
    std::ranges::sort(names);

    for (CarriedFont const& carried : carriedFonts()) {
        auto const why = unusable.find(carried.fontName);
        if (why == unusable.end())
            continue;
        std::string const name(carried.fontName);
        // The same font may be installed.
        FontFace const* const same = named(name);
        FontFace const& used = same ? *same : nearest(impliedTraits(name));
        missing.push_back({name, used.fullName(), why->second});
    }
    if (!isFamily(emojiFamily()))
        missing.push_back(
            {emojiFamily().toStdString(), nearest({}).fullName(), Missing::Why::notInstalled});
}

FontFace const* FontRegistry::Fonts::named(std::string const& fontName) const
{
    auto found = byName.find(fontName);
    if (found == byName.end()) {
        // A carried font that is missing may be installed, under its PostScript name.
        auto const carried =
            std::ranges::find(carriedFonts(), std::string_view(fontName), &CarriedFont::fontName);
        if (carried != carriedFonts().end())
            found = byName.find(std::string(carried->file));
    }
    return found == byName.end() ? nullptr : &found->second;
}

FontFace const* FontRegistry::Fonts::nearestOfFamily(QString const& family, int weight) const
{
    auto const [begin, end] = families.equal_range(family);
    // Upright faces of normal width come before all others.
    auto const distance = [&](auto const& entry) {
        FontFace const& face = entry.second;
        return std::abs(face.weight - weight) + (face.isSlanted ? 1000 : 0) +
               (face.hasNormalWidth ? 0 : 1000);
    };
    auto const nearest = std::ranges::min_element(begin, end, {}, distance);
    return nearest == end ? nullptr : &nearest->second;
}

FontFace const& FontRegistry::Fonts::nearest(FontTraits const& traits) const
{
    for (std::string_view const family : similarFamilies(traits.kind)) {
        if (auto const* const face =
                nearestOfFamily(QString::fromUtf8(family.data(), family.size()), traits.weight))
            return *face;
    }
    for (char const* const family : {"Inter", "DejaVu Sans"}) {
        if (auto const* const face = nearestOfFamily(QString::fromUtf8(family), traits.weight))
            return *face;
    }
    return families.empty() ? lastResort : families.begin()->second;
}

QFont FontRegistry::Fonts::fontOf(FontFace const& face) const
{
    QStringList inTurn{face.family};
    auto const add = [&](QString const& further) {
        if (!inTurn.contains(further) && isFamily(further))
            inTurn.append(further);
    };
    add(face.family + QStringLiteral(" Extended"));
    add(face.family + QStringLiteral(" Vietnamese"));
    add(companionOf(face.family));
    add(emojiFamily());
    std::ranges::for_each(scriptFamilies, add);
    QFont font;
    font.setFamilies(inTurn);
    font.setWeight(static_cast<QFont::Weight>(std::clamp(face.weight, 1, 1000)));
    font.setItalic(face.isSlanted);
    if (!face.hasNormalWidth)
        font.setStyleName(face.style);
    return font;
}

FontRegistry::Found FontRegistry::Fonts::resolve(std::string const& fontName) const
{
    if (FontFace const* const face = named(fontName))
        return {fontOf(*face), std::nullopt};
    FontFace const& face = nearest(impliedTraits(fontName));
    return {fontOf(face), face.fullName()};
}

FontRegistry::FontRegistry(std::filesystem::path const& carriedFonts)
    : m_fonts(std::make_unique<Fonts>(carriedFonts))
{
}

FontRegistry::~FontRegistry() = default;

void FontRegistry::load() const
{
    std::call_once(m_fonts->loading, [this] { m_fonts->load(); });
}

FontRegistry::Found FontRegistry::find(std::string const& fontName) const
{
    // Names come from documents, so their number is unbounded. Resolving one again is cheap.
    constexpr std::size_t answersKept = 500;
    load();
    std::lock_guard const lock(m_fonts->guard);
    auto& answers = m_fonts->answers;
    if (auto const known = answers.find(fontName); known != answers.end())
        return known->second;
    if (answers.size() >= answersKept)
        answers.clear();
    return answers.emplace(fontName, m_fonts->resolve(fontName)).first->second;
}

std::vector<FontRegistry::Missing> FontRegistry::missingCarried() const
{
    load();
    return m_fonts->missing;
}

std::vector<std::string> FontRegistry::lettersWithoutFont(std::string const& text) const
{
    constexpr std::size_t answersKept = 20'000, maxReported = 10;
    if (std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return {};
    load();
    std::vector<std::string> without;
    std::lock_guard const lock(m_fonts->guard);
    auto& known = m_fonts->hasLetter;
    if (known.size() > answersKept)
        known.clear();
    for (uint const code : QString::fromStdString(text).toUcs4()) {
        auto const letter = char32_t(code);
        if (without.size() == maxReported)
            break;
        if (!isDrawn(letter))
            continue;
        auto const answer = known.find(letter);
        bool const hasFont = answer != known.end()
                                 ? answer->second
                                 : known.emplace(letter, isInAnyFont(letter)).first->second;
        if (hasFont)
            continue;
        std::string const written = QString::fromUcs4(&letter, 1).toStdString();
        if (std::ranges::find(without, written) == without.end())
            without.push_back(written);
    }
    return without;
}

std::vector<std::string> const& FontRegistry::installedNames() const
{
    load();
    return m_fonts->names;
}

} // namespace framewright
