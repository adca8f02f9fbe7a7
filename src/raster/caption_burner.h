#pragma once

#include "composition/asset_store.h"
#include "composition/composition_builder.h"
#include "composition/overlay.h"
#include "model/project.h"
#include "text/font_registry.h"
#include "text/text_images.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

/// The name of a slot that waits for its footage, while its black plate is seen.
struct PlaceholderPlate {
    double start = 0;
    double end = 0;
    std::string name;

    bool operator==(PlaceholderPlate const&) const = default;
};

/// Turns texts, captions and the names of placeholders into overlays. Any thread may call.
class CaptionBurner {
public:
    explicit CaptionBurner(std::shared_ptr<FontRegistry const> fonts);

    /// What is burned into the pictures of `project` during `during` (its end included), or
    /// all of it; the last one foremost. Placeholder names lie lowest, then the tracks: the first
    /// one covers the others, as for video. Hidden tracks and texts without a visible character are
    /// skipped.
    ///
    /// Nothing is drawn yet. Overlays may outlive the burner.
    std::vector<Overlay> overlays(Project const& project, AssetStore const& assets,
                                  PixelSize renderSize,
                                  std::optional<TimeRange> during = std::nullopt) const;

    /// When which placeholders on video tracks are seen, without the times when a picture above
    /// reaches into the band across the middle where the name stands. Those seen during `during`,
    /// or all of them.
    static std::vector<PlaceholderPlate>
    placeholderPlates(Project const& project, AssetStore const& assets,
                      std::optional<TimeRange> during = std::nullopt);

private:
    std::shared_ptr<TextImages const> m_images;
};

} // namespace framewright
