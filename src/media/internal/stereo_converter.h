#pragma once

#include "media/internal/audio_decoder.h"
#include "media/internal/av_handles.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace framewright {

/// Converts the blocks of a stream to contiguous 48 kHz stereo.
///
/// The problem: after a seek, the output must equal that of a read from the start, sample by
/// sample; otherwise a cut would sound different each time it is played. A resampler has two kinds
/// of state that depend on where it started: the history of its filter, and its phase, that is
/// where output samples fall between source samples.
///
/// The method: phases repeat. At 44,100 Hz every 147th source sample coincides with an output
/// sample (44,100 / gcd(44,100, 48,000)), and a resampler started at such a sample is in the phase
/// it would have had there anyway (`startFor`). The filter's history is right after a few hundred
/// samples; callers start that much earlier.
///
/// Gaps between blocks become silence. Where blocks overlap, the earlier one is kept.
class StereoConverter {
public:
    /// `file` is for messages.
    StereoConverter(int sourceRate, std::filesystem::path const& file);

    /// The last stream sample at or before output sample `output` that coincides with an output
    /// sample.
    std::int64_t startFor(std::int64_t output) const;

    /// The first output sample at or after a stream sample.
    std::int64_t outputFor(std::int64_t source) const;

    void startAt(std::int64_t source);

    /// Converts a block, or part of the gap before it. False if the block must be passed again.
    bool add(AudioBlock const& block);

    /// Drains the resampler.
    void finish();

    std::int64_t expected() const { return m_expected; } ///< The next stream sample.
    std::int64_t position() const { return m_position; } ///< The first output sample ready.
    std::int64_t readyUpTo() const { return m_position + std::int64_t(m_ready.size() / 2); }

    /// Removes the samples from `first` on, which must not be before `position`, and discards those
    /// before. Silence for samples that are not ready.
    void take(std::int64_t first, std::span<float> interleaved);

private:
    void adaptTo(AVFrame const& frame);
    void convert(std::uint8_t const** planes, int count);
    void addSilence(AVFrame const& like, int count);

    std::filesystem::path m_path;
    int m_rate;
    ResamplerHandle m_resampler;
    int m_format = -1;  ///< The resampler's input format.
    int m_channels = 0; ///< The resampler's input channels.
    std::int64_t m_expected = 0;
    std::int64_t m_position = 0;
    std::vector<float> m_ready;
};

} // namespace framewright
