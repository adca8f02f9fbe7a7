#pragma once

#include <QString>

#include <map>
#include <string>
#include <vector>

namespace framewright {

/// One font of a family.
struct FontFace {
    QString family;
    QString style;    ///< "SemiBold Italic"
    int weight = 400; ///< As in OpenType: 100 to 900.
    bool isSlanted = false;
    bool hasNormalWidth = true; ///< Neither condensed nor expanded.

    /// "Nunito Sans Medium", and the family alone for its regular font.
    std::string fullName() const;
};

/// The fonts that fontconfig knows.
struct InstalledFonts {
    std::map<std::string, FontFace> byPostScriptName; ///< Those of the system.
    std::map<std::string, FontFace> byFile;           ///< Those this process has registered.

    static InstalledFonts read();
};

/// Whether a font that fontconfig knows has this letter. Any thread, once fonts were read.
bool isInAnyFont(char32_t letter);

} // namespace framewright
