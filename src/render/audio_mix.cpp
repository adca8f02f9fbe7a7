#include "render/audio_mix.h"

#include <algorithm>
#include <cmath>

namespace framewright {

namespace {

constexpr std::int64_t samplesPerTick = AudioMix::sampleRate / MediaTime::timescale;
static_assert(samplesPerTick * MediaTime::timescale == AudioMix::sampleRate);

std::int64_t sampleAt(MediaTime time)
{
    return time.value * samplesPerTick;
}

float gainAt(AudioMix::Step const& step, std::int64_t sample)
{
    std::int64_t const start = sampleAt(step.timeRange.start);
    std::int64_t const end = sampleAt(step.timeRange.end);
    if (sample >= end)
        return step.endVolume;
    double const part = double(sample - start) / double(end - start);
    return float(step.startVolume + (double(step.endVolume) - step.startVolume) * part);
}

} // namespace

void AudioMix::gains(CompositionTrackID trackID, double from, std::span<float> gains) const
{
    auto const found = steps.find(trackID);
    if (found == steps.end()) {
        std::ranges::fill(gains, 1.0f);
        return;
    }
    std::vector<Step> const& track = found->second;
    auto const startSample = [](Step const& step) { return sampleAt(step.timeRange.start); };

    std::int64_t sample = std::llround(from * sampleRate);
    std::int64_t const last = sample + std::int64_t(gains.size());
    auto next = std::ranges::upper_bound(track, sample, {}, startSample);
    for (std::size_t n = 0; sample < last;) {
        std::int64_t const until = next == track.end() ? last : std::min(last, startSample(*next));
        for (; sample < until; ++sample, ++n)
            gains[n] = next == track.begin() ? 1.0f : gainAt(*std::prev(next), sample);
        while (next != track.end() && startSample(*next) <= sample)
            ++next;
    }
}

} // namespace framewright
