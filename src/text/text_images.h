#pragma once

#include "text/font_registry.h"
#include "text/placed_image.h"
#include "text/text_block.h"

#include <cstddef>
#include <list>
#include <memory>
#include <mutex>

namespace framewright {

/// Draws texts and caches the most recently used images. Any thread may call.
class TextImages {
public:
    /// Caches at most `keptBytes` of pixels.
    explicit TextImages(std::shared_ptr<FontRegistry const> fonts,
                        std::size_t keptBytes = std::size_t(24) << 20);

    /// The visible part of the text; empty when there is none. Equal blocks give equal images on
    /// any thread. Needs a QGuiApplication.
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
    mutable std::list<Kept> m_kept; ///< Most recently used first.
};

} // namespace framewright
