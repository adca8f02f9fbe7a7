#include "text/text_images.h"

#include "text/internal/text_painter.h"

#include <algorithm>

namespace framewright {

namespace {

constexpr std::size_t keptImages = 64;

} // namespace

TextImages::TextImages(std::shared_ptr<FontRegistry const> fonts, std::size_t keptBytes)
    : m_fonts(std::move(fonts)), m_keptBytes(keptBytes)
{
}

std::shared_ptr<PlacedImage const> TextImages::image(TextBlock const& block) const
{
    if (auto found = known(block))
        return found;
    // Not under the lock, or a long text would block everybody. Two threads may draw the same one.
    auto const made = std::make_shared<PlacedImage const>(paintText(block, *m_fonts));
    keep(block, made);
    return made;
}

std::shared_ptr<PlacedImage const> TextImages::known(TextBlock const& block) const
{
    std::lock_guard const lock(m_mutex);
    auto const found = std::ranges::find(m_kept, block, &Kept::block);
    if (found == m_kept.end())
        return nullptr;
    m_kept.splice(m_kept.begin(), m_kept, found);
    return found->image;
}

void TextImages::keep(TextBlock const& block, std::shared_ptr<PlacedImage const> const& image) const
{
    std::lock_guard const lock(m_mutex);
    std::erase_if(m_kept, [&](Kept const& kept) { return kept.block == block; });
    m_kept.push_front({block, image});
    std::size_t bytes = 0, count = 0;
    auto const tooMany = std::ranges::find_if(m_kept, [&](Kept const& kept) {
        bytes += kept.image->pixels.size();
        return bytes > m_keptBytes || ++count > keptImages;
    });
    m_kept.erase(tooMany, m_kept.end());
}

} // namespace framewright
