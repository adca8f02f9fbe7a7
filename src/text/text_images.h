#pragma once

#include "text/font_registry.h"
#include "text/placed_image.h"
#include "text/text_block.h"

#include <cstddef>
#include <list>
#include <memory>
#include <mutex>

namespace framewright {

/// Draws texts and keeps those that were drawn last. Any thread may call.
class TextImages {
public:
    /// It keeps at most `keptBytes` of pixels.
    explicit TextImages(std::shared_ptr<FontRegistry const> fonts,
                        std::size_t keptBytes = std::size_t(24) << 20);

    /// The text as it is seen on its canvas; empty when nothing of it is. Equal blocks give equal
    /// images, on any thread. There must be a QGuiApplication.
    std::shared_ptr<PlacedImage const> image(TextBlock const& block) const;

private:
    struct Kept {
        TextBlock block;
        std::shared_ptr<PlacedImage const> image;
    };

    std::shared_ptr<PlacedImage const> known(TextBlock const& block) const;
    void keep(TextBlock const& block, std::shared_ptr<PlacedImage const> const& image) const;

    std::shared_ptr<FontRegistry const> m_fonts;
    std::size_t m_keptBytes;
    mutable std::mutex m_mutex;
    mutable std::list<Kept> m_kept; ///< The last one used first.
};

} // namespace framewright
