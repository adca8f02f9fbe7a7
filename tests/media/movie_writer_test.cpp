#include "media/movie_writer.h"

#include "media/made_media.h"
#include "media/media_error.h"

#include <gmock/gmock.h>

#include <cmath>
#include <fstream>
#include <numbers>

namespace framewright {

namespace fs = std::filesystem;

namespace {

MovieSettings small()
{
    MovieSettings settings;
    settings.width = countWidth;
    settings.height = countHeight;
    settings.threads = 1;
    return settings;
}

/// A second of silence with a click at each of `clicks`, which are samples.
std::vector<float> silenceWithClicks(int samples, std::vector<int> const& clicks)
{
    std::vector<float> sound(std::size_t(samples) * 2);
    for (int const click : clicks)
        sound[std::size_t(click) * 2] = sound[std::size_t(click) * 2 + 1] = 0.9F;
    return sound;
}

fs::path writtenMovie(std::string const& name, MovieSettings const& settings, int frames)
{
    fs::path const file = testFolder() / name;
    MovieWriter writer(file, settings);
    for (int i = 0; i < frames; ++i) {
        writer.writeFrame(pictureOf(i));
        writer.writeSound(silenceWithClicks(1600, {}));
    }
    writer.finish();
    return file;
}

} // namespace

TEST(MovieWriter, StreamsBeginTogetherAndCarryTheirTags)
{
    fs::path const file = writtenMovie("tags.mp4", small(), 45);
    EXPECT_EQ(probed(file, "v",
                     "stream=codec_name,profile,has_b_frames,pix_fmt,color_range,color_space,"
                     "color_transfer,color_primaries,start_time,duration,nb_frames"),
              "h264|High|2|yuv420p|tv|bt709|bt709|bt709|0.000000|1.500000|45\n");
    EXPECT_EQ(
        probed(file, "a", "stream=codec_name,profile,sample_rate,channels,start_time,duration"),
        "aac|LC|48000|2|0.000000|1.500000\n");
}

} // namespace framewright
