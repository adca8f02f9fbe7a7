#pragma once

#include "composition/asset_store.h"
#include "model/project.h"
#include "raster/caption_burner.h"
#include "raster/rgb_image.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace framewright {

/// The size of a picture of a canvas that is `width` pixels wide: its height is the nearest there
/// is.
PixelSize stillSize(AspectPreset canvas, int width);

/// When a project's last frame begins; 0 when it has none.
double lastFrameTime(Project const& project, AssetStore const& assets);

/// Single frames of projects.
///
/// Recently used decoders stay open, so the next frame of the same footage is fast. A file that has
/// changed is reopened. Any thread may call; a call blocks while it decodes,
/// so never call it on the main thread.
class StillFrames {
public:
    explicit StillFrames(std::shared_ptr<CaptionBurner const> burner, int openReaders = 8);
    ~StillFrames();

    /// The picture of the piece at `time` seconds, of `stillSize`. Footage fills it where it fills
    /// the canvas. At or after the end it is the last frame; an empty project is black.
    /// Throws MediaError, which names the clip and the file that cannot be read.
    RGBImage image(Project const& project, AssetStore const& assets, double time, int width);

    /// The same at several times, in the order of `times`. It draws on all processors.
    std::vector<RGBImage> images(Project const& project, AssetStore const& assets,
                                 std::span<double const> times, int width);

    /// `image` as a PNG file.
    std::vector<std::uint8_t> png(Project const& project, AssetStore const& assets, double time,
                                  int width);

    /// Closes the decoders that were not used for this long, and gives back the memory of their
    /// pictures. Does not wait for pictures that are being drawn.
    void closeReadersUnusedFor(std::chrono::steady_clock::duration idle);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
