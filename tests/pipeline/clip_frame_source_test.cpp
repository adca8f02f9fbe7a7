#include "pipeline/internal/clip_frame_source.h"

#include "composition/composition_builder.h"
#include "rendering/made_media.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace framewright {

using ClipFrames = MadeMedia;

TEST_F(ClipFrames, ManyPhotosAtATimeAreReadOnceAndNotMuchLargerThanNeeded)
{
    std::vector<Track> tracks;
    for (int n = 0; n < 6; ++n) {
        auto const file = made("-f lavfi -i color=red:s=5000x1250 -frames:v 1 -q:v 20",
                               "photo" + std::to_string(n) + ".jpg");
        Clip zoomed = clip(loaded(file), 0, 2);
        zoomed.transform = {.scale = n < 3 ? 1.0 : 200.0, .offsetX = 0.1 * n - 0.3};
        tracks.push_back(videoTrack({zoomed}));
    }
    BuiltComposition const built = CompositionBuilder::build(
        project(tracks), assets, {{270, 480}, 30, true, DynamicRange::standard});
    OpenReaders readers(1);
    OpenPhotos photos(1);
    OpeningAhead ahead(1, {});
    FrameDrawer::Options const options{.order = FrameDrawer::Order::forward};
    ClipFrameSource source(built, {readers, photos, ahead}, options);
    for (double const time : {0.5, 1.0}) { // The second time without the files.
        std::vector<int> widths;
        for (Layer const& layer : built.video.instructions.front().layers) {
            if (!layer.isBlackPlate)
                widths.push_back(source.frame(layer, time)->width());
        }
        EXPECT_THAT(widths, testing::ElementsAre(540, 540, 540, 4096, 4096, 4096));
        std::filesystem::remove_all(folder);
    }
}

} // namespace framewright
