#include "media/audio_reader.h"
#include "media/made_media.h"
#include "media/video_reader.h"

#include <gtest/gtest.h>

#include <functional>

namespace framewright {

namespace {

using Arguments = std::vector<std::string>;

constexpr int frames = 100;

Arguments const oneKeyframe = {"-c:v", "libx264", "-preset", "veryfast", "-g", "1000"};

void readFrame(std::filesystem::path const& file, double seconds, ReadingActivity activity)
{
    VideoReader(file, 2, std::move(activity)).frameAt(seconds);
}

void readAudio(std::filesystem::path const& file, double seconds, ReadingActivity activity)
{
    std::vector<float> audio(2);
    AudioReader(file, std::move(activity)).read(std::int64_t(seconds * 48000), audio);
}

struct Ended {};

} // namespace

TEST(ReadingWatch, IsCalledAtEveryStepAndMayStopAtAny)
{
    struct Case {
        std::filesystem::path file;
        void (*read)(std::filesystem::path const&, double seconds, ReadingActivity);
        double seconds;
        int atLeast; ///< Packets to read.
    };
    Arguments const tone = {"-f", "lavfi", "-i", "sine=duration=20"};
    for (Case const& c : {
             Case{madeWith("one keyframe.mp4", numberedInput(frames, "25") + oneKeyframe),
                  readFrame, 3.9, frames - 4},
             Case{madeWith("one keyframe.mkv", numberedInput(frames, "25") + oneKeyframe),
                  readFrame, 3.9, frames - 4},
             // Seeking in Ogg is unreliable, so it is read from the start.
             Case{madeWith("far.ogg", tone + Arguments{"-c:a", "libvorbis"}), readAudio, 19, 300},
         }) {
        int calls = 0;
        c.read(c.file, c.seconds, [&] { ++calls; });
        EXPECT_GE(calls, c.atLeast) << c.file;

        // While opening, while reading ahead, and at the last step.
        for (int const last : {1, 2, 3, 5, 10, calls / 2, calls - 1, calls}) {
            int count = 0;
            EXPECT_THROW(c.read(c.file, c.seconds,
                                [&] {
                                    if (++count >= last)
                                        throw Ended();
                                }),
                         Ended)
                << c.file << " at call " << last;
            EXPECT_LE(count, last + 2) << c.file << ": it continued";
        }
    }
}

} // namespace framewright
