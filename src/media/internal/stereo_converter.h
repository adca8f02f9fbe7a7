#pragma once

#include "media/internal/audio_decoder.h"
#include "media/internal/av_handles.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace framewright {

/// Turns blocks of a stream into one line of 48 kHz stereo samples.
///
/// A sample's value depends on the stream around it only, not on where conversion started, once
/// it is a few hundred samples behind that start. Gaps between blocks are silent; where blocks
/// overlap, the earlier one stays.
class StereoConverter {
public:
    /// `file` is for messages.
    StereoConverter(int sourceRate, std::filesystem::path const& file);

    /// The last sample of the stream, at or before the one for `output`, that falls on a sample of
    /// the output: conversion may start there.
    std::int64_t startFor(std::int64_t output) const;

    /// The sample of the output that is at or after a sample of the stream.
    std::int64_t outputFor(std::int64_t source) const;

    void startAt(std::int64_t source);

    /// Converts a block, or part of the gap before it: false while the block is not used up.
    bool add(AudioBlock const& block);

    /// Converts what the resampler holds back.
    void finish();

    std::int64_t expected() const { return m_expected; } ///< Next sample of the stream.
    std::int64_t position() const { return m_position; } ///< The first output sample held ready.
    std::int64_t readyUpTo() const { return m_position + std::int64_t(m_ready.size() / 2); }

    /// Gives out the samples from `first` on, which is not before `position`; silence for those
    /// that are not ready. They and all before them are dropped.
    void take(std::int64_t first, std::span<float> interleaved);

private:
    void adaptTo(AVFrame const& frame);
    void convert(std::uint8_t const** planes, int count);
    void addSilence(AVFrame const& like, int count);

    std::filesystem::path m_path;
    int m_rate;
    ResamplerHandle m_resampler;
    int m_format = -1;  ///< Of the samples the resampler takes.
    int m_channels = 0; ///< And how many it takes.
    std::int64_t m_expected = 0;
    std::int64_t m_position = 0;
    std::vector<float> m_ready;
};

} // namespace framewright
