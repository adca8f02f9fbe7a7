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

    /// "Nunito Sans Medium"; the family alone for its regular face.
    std::string fullName() const;
};

/// The fonts known to fontconfig.
struct InstalledFonts {
    std::map<std::string, FontFace> byPostScriptName; ///< The system's.
    std::map<std::string, FontFace> byFile;           ///< Those registered by this process.

    static InstalledFonts read();
};

/// Whether any font known to fontconfig has this letter. Any thread, once fonts have been read.
bool isInAnyFont(char32_t letter);

} // namespace framewright
