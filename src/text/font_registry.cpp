#include "text/font_registry.h"

#include <algorithm>

namespace framewright {

struct FontRegistry::Fonts {
    std::filesystem::path folder;
    std::vector<std::string> installed;
};

FontRegistry::FontRegistry(std::filesystem::path carriedFonts)
    : m_fonts(std::make_unique<Fonts>(Fonts{std::move(carriedFonts), {}}))
{
}

FontRegistry::~FontRegistry() = default;

FontRegistry::Found FontRegistry::find(std::string const&) const
{
    return {QFont(QStringLiteral("DejaVu Sans")), "DejaVu Sans"};
}

std::vector<FontRegistry::Missing> FontRegistry::missingCarried() const
{
    std::vector<Missing> missing;
    for (FontOption const& option : fontOptions().first(16))
        missing.push_back({std::string(option.fontName), "DejaVu Sans", Missing::Why::absent});
    return missing;
}

std::vector<std::string> const& FontRegistry::installedNames() const
{
    return m_fonts->installed;
}

void FontRegistry::load() const {}

} // namespace framewright
