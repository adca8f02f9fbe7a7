#pragma once

#include "text/font_options.h"

#include <QFont>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

/// Finds the fonts that styles name: carried ones (shipped with the application), the system and
/// monospaced ones, and whatever is installed.
///
/// The first call registers the carried fonts with Qt, which takes tens of milliseconds; `load`
/// does that ahead of time. Any thread may call. Needs a QGuiApplication, and one registry per
/// process is enough, since fonts are registered per process.
class FontRegistry {
public:
    /// `carriedFonts` is the folder of the font files that come with the application.
    explicit FontRegistry(std::filesystem::path const& carriedFonts);
    ~FontRegistry();
    FontRegistry(FontRegistry const&) = delete;
    FontRegistry& operator=(FontRegistry const&) = delete;

    struct Found {
        QFont font; ///< With fallback families, colour emoji among them; without a size.
        std::optional<std::string>
            substitute; ///< The font used instead, when it isn't the one asked for.
    };

    /// The font named by a style's `fontName`, or the most similar one available. Never fails.
    Found find(std::string const& fontName) const;

    struct Missing {
        enum class Why { absent, damaged, notInstalled };
        std::string fontName; ///< As styles name it.
        std::string substitute;
        Why why;
    };

    /// The carried fonts that are absent or damaged, and the emoji font if it isn't installed.
    std::vector<Missing> missingCarried() const;

    /// Which letters of a text no font has, so that boxes are drawn for them: each once, in order,
    /// at most ten. Results are cached by letter.
    std::vector<std::string> lettersWithoutFont(std::string const& text) const;

    /// The PostScript names of all available fonts, sorted.
    std::vector<std::string> const& installedNames() const;

    /// Registers the carried fonts now, unless that has been done.
    void load() const;

private:
    struct Fonts;
    std::unique_ptr<Fonts> m_fonts;
};

} // namespace framewright
