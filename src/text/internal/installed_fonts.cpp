#include "text/internal/installed_fonts.h"

#include <fontconfig/fontconfig.h>

#include <cmath>

namespace framewright {

namespace {

/// Empty if the pattern has no such property.
char const* text(FcPattern const* pattern, char const* what)
{
    FcChar8* value = nullptr;
    if (FcPatternGetString(pattern, what, 0, &value) != FcResultMatch || !value)
        return "";
    return reinterpret_cast<char const*>(value);
}

int wholeNumber(FcPattern const* pattern, char const* what, int otherwise)
{
    int value = otherwise;
    FcPatternGetInteger(pattern, what, 0, &value);
    return value;
}

FontFace faceOf(FcPattern const* pattern)
{
    double weight = FC_WEIGHT_REGULAR;
    FcPatternGetDouble(pattern, FC_WEIGHT, 0, &weight);
    return {.family = QString::fromUtf8(text(pattern, FC_FAMILY)),
            .style = QString::fromUtf8(text(pattern, FC_STYLE)),
            .weight = static_cast<int>(std::lround(FcWeightToOpenTypeDouble(weight))),
            .isSlanted = wholeNumber(pattern, FC_SLANT, FC_SLANT_ROMAN) != FC_SLANT_ROMAN,
            .hasNormalWidth = wholeNumber(pattern, FC_WIDTH, FC_WIDTH_NORMAL) == FC_WIDTH_NORMAL};
}

template <class Take>
void forEachFont(FcSetName set, Take const& take)
{
    FcFontSet const* const fonts = FcConfigGetFonts(nullptr, set);
    for (int i = 0; fonts && i < fonts->nfont; ++i) {
        FcPattern const* const pattern = fonts->fonts[i];
        // Skip the variable font itself; its named instances are listed as well.
        FcBool isVariable = FcFalse;
        FcPatternGetBool(pattern, FC_VARIABLE, 0, &isVariable);
        if (!isVariable && *text(pattern, FC_FAMILY))
            take(pattern);
    }
}

} // namespace

std::string FontFace::fullName() const
{
    bool const isPlain =
        style.isEmpty() || style == QLatin1String("Regular") || style == QLatin1String("Book");
    return (isPlain ? family : family + QLatin1Char(' ') + style).toStdString();
}

bool isInAnyFont(char32_t letter)
{
    for (FcSetName const set : {FcSetSystem, FcSetApplication}) {
        FcFontSet const* const fonts = FcConfigGetFonts(nullptr, set);
        for (int i = 0; fonts && i < fonts->nfont; ++i) {
            FcCharSet* letters = nullptr;
            if (FcPatternGetCharSet(fonts->fonts[i], FC_CHARSET, 0, &letters) == FcResultMatch &&
                FcCharSetHasChar(letters, letter))
                return true;
        }
    }
    return false;
}

InstalledFonts InstalledFonts::read()
{
    InstalledFonts installed;
    forEachFont(FcSetSystem, [&](FcPattern const* pattern) {
        if (char const* const name = text(pattern, FC_POSTSCRIPT_NAME); *name)
            installed.byPostScriptName.try_emplace(name, faceOf(pattern));
    });
    forEachFont(FcSetApplication, [&](FcPattern const* pattern) {
        installed.byFile.try_emplace(text(pattern, FC_FILE), faceOf(pattern));
    });
    return installed;
}

} // namespace framewright
