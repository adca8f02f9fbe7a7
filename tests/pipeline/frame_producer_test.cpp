#include "pipeline/frame_producer.h"

#include "composition/composition_builder.h"
#include "media/media_error.h"
#include "pipeline/audio_producer.h"
#include "rendering/made_media.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <mutex>
#include <thread>

namespace framewright {

namespace {

using testing::HasSubstr;

constexpr int rate = 30;

/// Where on the timeline drawing was when it had each file opened.
class Openings {
public:
    std::function<void(std::filesystem::path const&, double)> observer()
    {
        return [this](std::filesystem::path const& file, double time) {
            std::lock_guard const lock(m_mutex);
            m_times[file.filename().string()].push_back(time);
        };
    }
    std::vector<double> of(std::string const& file)
    {
        std::lock_guard const lock(m_mutex);
        return m_times[file];
    }

private:
    std::mutex m_mutex;
    std::map<std::string, std::vector<double>> m_times;
};

class Producing : public MadeMedia {
protected:
    Id footage(std::string const& name, std::string const& coding = "-g 30")
    {
        return loaded(made("-f lavfi -i testsrc=s=160x90:r=30:d=5 -f lavfi -i sine=d=5"
                           " -c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac " +
                               coding,
                           name));
    }

    std::shared_ptr<BuiltComposition const> composition(std::vector<Clip> clips,
                                                        PixelSize size = {90, 160}) const
    {
        return std::make_shared<BuiltComposition const>(CompositionBuilder::build(
            project({videoTrack(std::move(clips))}), assets, {size, rate}));
    }
};

} // namespace

TEST_F(Producing, OpensTheNextCutsDecoderAhead)
{
    Id const a = footage("a.mp4"), b = footage("b.mp4");
    Openings openings;
    FrameProducer producer(
        composition({clip(a, 0, 2), clip(b, 2, 1, 1), clip(b, 3, 1, 2), clip(a, 4, 1, 4)}),
        {.capacity = 2, .openAhead = 0.5, .opening = openings.observer()});
    producer.seek(0);
    while (auto const produced = producer.next()) {
        if (produced->time < 1.3) {
            EXPECT_TRUE(openings.of("b.mp4").empty()) << produced->time;
        }
    }
    auto const ofA = openings.of("a.mp4"), ofB = openings.of("b.mp4");
    ASSERT_EQ(ofB.size(), 1u) << "the cut within the file reads on";
    EXPECT_NEAR(ofB[0], 1.5, 1.01 / rate);
    ASSERT_EQ(ofA.size(), 2u);
    EXPECT_EQ(ofA[0], 0);
    EXPECT_NEAR(ofA[1], 3.5, 1.01 / rate);
}

TEST_F(Producing, KeepsDecodersThatAnEditedCompositionUses)
{
    Id const a = footage("a.mp4"), b = footage("b.mp4");
    Openings openings;
    FrameProducer producer(composition({clip(a, 0, 5)}), {.opening = openings.observer()});
    producer.seek(0);
    EXPECT_TRUE(producer.next());
    producer.replace(composition({clip(a, 0, 2), clip(b, 2, 1)}, {180, 320}));
    auto const produced = producer.next();
    ASSERT_TRUE(produced);
    EXPECT_NEAR(produced->time, 1.0 / rate, 1e-9);
    EXPECT_EQ(produced->frame.width(), 180);
    EXPECT_EQ(openings.of("a.mp4").size(), 1u);
}

TEST_F(Producing, ReportsAnErrorAfterTheFramesBeforeIt)
{
    Id const a = footage("a.mp4"), gone = footage("gone.mp4");
    std::filesystem::remove(folder / "gone.mp4");
    FrameProducer producer(composition({clip(a, 0, 1), clip(gone, 1, 1), clip(a, 2, 1)}), {});
    producer.seek(0);
    for (int n = 0; n < rate; ++n)
        ASSERT_TRUE(producer.next()) << n;
    try {
        producer.next();
        ADD_FAILURE() << "there is no such file";
    } catch (MediaError const& error) {
        EXPECT_THAT(error.what(), HasSubstr("clip 2 on Video"));
    }
    EXPECT_FALSE(producer.next());
    producer.seek(2);
    EXPECT_TRUE(producer.next());
}

TEST_F(Producing, IsStoppedOnTheWayToAFarFrame)
{
    // Whoever reads as far as the wanted frame finds that it is missing.
    auto const file = made("-f lavfi -i testsrc=s=160x90:r=30:d=20 -c:v libx264 -preset ultrafast"
                           " -g 1000 -pix_fmt yuv420p -movflags +faststart",
                           "one keyframe.mp4");
    Id const id = loaded(file);
    std::filesystem::resize_file(file, std::filesystem::file_size(file) * 9 / 10);
    FrameProducer* stopped = nullptr;
    std::atomic<int> packets = 0;
    FrameProducer producer(composition({clip(id, 0, 0.5, 19)}), {.activity = [&] {
                               if (++packets == 20)
                                   stopped->stop();
                           }});
    stopped = &producer;
    producer.seek(0);
    EXPECT_FALSE(producer.next());
    EXPECT_LT(packets, 30);
}

TEST_F(Producing, AudioSeeksAndIsReplacedToTheSample)
{
    Id const tone = loaded(made("-f lavfi -i sine=r=48000:d=5", "tone.wav"));
    auto const mixed = [&](std::vector<Clip> clips) {
        return std::make_shared<BuiltComposition const>(CompositionBuilder::build(
            project({audioTrack(std::move(clips))}), assets, {{90, 160}, rate}));
    };
    auto const whole = mixed({clip(tone, 0, 4)});
    auto const read = [](AudioProducer& producer, std::size_t samples) {
        std::vector<float> audio(samples * 2);
        EXPECT_TRUE(producer.read(audio));
        return audio;
    };
    AudioProducer reference(whole, {});
    reference.seek(0);
    std::vector<float> const all = read(reference, 2 * AudioProducer::sampleRate);
    auto const part = [&](std::size_t first, std::size_t count) {
        return std::vector(all.begin() + std::ptrdiff_t(first * 2),
                           all.begin() + std::ptrdiff_t((first + count) * 2));
    };

    AudioProducer producer(whole, {.capacity = 2});
    producer.seek(1000);
    EXPECT_EQ(read(producer, 1601), part(1000, 1601));
    producer.replace(mixed({}));
    EXPECT_EQ(read(producer, 5000), std::vector<float>(10000));
    producer.replace(whole);
    EXPECT_EQ(read(producer, 4000), part(7601, 4000));

    // What comes after the last sample isn't even opened.
    Id const gone = Id::random();
    LoadedAsset missing = *assets.find(tone);
    missing.file = folder / "gone.wav";
    assets.insert(gone, missing);
    producer.replace(mixed({clip(tone, 0, 1), clip(gone, 1, 1)}));
    constexpr int samples = AudioProducer::sampleRate;
    producer.seek(samples - 100, 100);
    EXPECT_EQ(read(producer, 100).size(), 200u);
    std::vector<float> more(2);
    EXPECT_FALSE(producer.read(more));
    producer.seek(samples - 100, 101);
    EXPECT_THROW(read(producer, 101), MediaError);
}

} // namespace framewright
