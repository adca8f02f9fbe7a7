#pragma once

#include "media/internal/media_input.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace framewright {

/// Determines at which sample of an audio stream a decoded block begins.
///
/// The problem: timestamps are too coarse to place blocks by. Matroska rounds them to milliseconds,
/// 48 samples; phones record the jitter of their clocks. Placed by timestamps alone, blocks overlap
/// or leave gaps, and each is a click. Counting samples from the start would be seamless, but real
/// gaps do exist, and a seek must find the position that reading from the start arrives at;
/// otherwise the same cut would sound different each time.
///
/// The method: a block whose timestamp is off by less than 20 ms follows the one before it. To get
/// the same answer after a seek:
/// - MP4 and MOV list all blocks in their index, so positions are computed for the whole file when
///   it is opened. Small deviations that persist over many blocks are real and move the audio:
///   phones stamp the first block with the time at which recording was requested, and the rest with
///   when the microphone delivered.
/// - Elsewhere blocks of constant length begin at multiples of it from the first block, and the
///   timestamp selects the multiple.
///
/// The limits: outside MP4, seeking can be off where timestamps jitter by more than their unit, and
/// by half a millisecond for blocks of varying length stamped in milliseconds (Vorbis in WebM).
class SampleClock {
public:
    struct FirstBlock {
        std::int64_t stamp; ///< In the stream's time base.
        int length;         ///< In samples, as decoded.
        int skipped;        ///< How many of them are encoder delay.
        int sampleRate;
    };

    SampleClock(MediaInput const& input, AVStream& stream, FirstBlock const& first);

    /// The sample at which the block with this timestamp begins. `expected`: where the previous
    /// block ended, unless this is the first one after a seek.
    std::int64_t position(std::int64_t stamp, std::optional<std::int64_t> expected) const;

    /// The timestamp to seek to for a sample.
    std::int64_t stampOf(std::int64_t position) const;

    /// Where the encoder's padding begins, if the container says.
    std::optional<std::int64_t> end() const { return m_end; }

private:
    std::int64_t stamped(std::int64_t stamp) const;
    bool isNear(std::int64_t a, std::int64_t b) const;
    bool isPersistentlyShifted(int entry, std::int64_t expected, int blockLength) const;
    void placeBlocks(int blockLength);
    void findEndOfAudio(MediaInput const& input, FirstBlock const& first);

    AVStream& m_stream;
    std::int64_t m_zero;
    int m_rate;
    std::int64_t m_anchor = 0;             ///< The first block's position.
    std::int64_t m_grid = 1;               ///< Blocks begin at multiples of it from the anchor.
    std::int64_t m_stampUnit = 1;          ///< The timestamps' resolution in samples, rounded up.
    std::vector<std::int64_t> m_positions; ///< Of each entry of the file's index, or empty.
    std::optional<std::int64_t> m_end;
};

} // namespace framewright
