#pragma once

#include "text/font_options.h"

#include <QFont>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

/// Finds the fonts that styles name: those the application carries, the system and monospaced ones,
/// and whatever is installed.
///
/// The carried ones are registered with Qt the first time anything is asked, which takes tens of
/// milliseconds; `load` gets that done ahead. Everything may be called on any thread, and waits for
/// that. One registry per process, since Qt's fonts are the process's; there must be a
/// QGuiApplication.
class FontRegistry {
public:
    /// `carriedFonts` is the folder of the files that come with the application.
    explicit FontRegistry(std::filesystem::path const& carriedFonts);
    ~FontRegistry();
    FontRegistry(FontRegistry const&) = delete;
    FontRegistry& operator=(FontRegistry const&) = delete;

    struct Found {
        QFont font; ///< Family, style and weight are set, colour emoji come next; no size yet.
        std::optional<std::string>
            substitute; ///< The font used instead, when it isn't the one asked for.
    };

    /// The font that a style's `fontName` names, else the nearest there is. Never fails.
    Found find(std::string const& fontName) const;

    struct Missing {
        enum class Why { absent, damaged, notInstalled };
        std::string fontName; ///< As styles name it.
        std::string substitute;
        Why why;
    };

    /// The fonts that should have come with the application and can't be used, and that of the
    /// emoji where it isn't installed.
    std::vector<Missing> missingCarried() const;

    /// The letters that no font has, each once and the first ten only, in the order of the text:
    /// boxes are drawn for them. Letters that were asked about before cost nearly nothing.
    std::vector<std::string> lettersWithoutFont(std::string const& text) const;

    /// The PostScript names of all fonts there are, sorted.
    std::vector<std::string> const& installedNames() const;

    /// Registers the carried fonts now, if that has not been done.
    void load() const;

private:
    struct Fonts;
    std::unique_ptr<Fonts> m_fonts;
};

} // namespace framewright
