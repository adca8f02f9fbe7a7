#pragma once

#include "media/internal/media_input.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace framewright {

/// Tells at which sample of a sound stream a decoded block begins.
///
/// Containers stamp blocks in milliseconds, or with the jitter of the clock that recorded them.
/// Placed by their stamps alone they would overlap or leave gaps, each a click. So blocks whose
/// stamps are off by little follow each other directly; in MP4 and MOV only if they don't stay
/// off. What is given is the same whether a block is reached by reading on or by a jump:
/// - In MP4 and MOV, whose index lists all blocks, it is counted from the beginning of the file.
/// - Elsewhere it is the stamp, moved to a multiple of the block length from the first block. That
///   fails where stamps jitter by more than their own unit, and for blocks of varying length that
///   are stamped in milliseconds (Vorbis in WebM): there a jump may be off by half a millisecond.
class SampleClock {
public:
    /// What is known of the first block of the stream.
    struct FirstBlock {
        std::int64_t stamp; ///< In the stream's time base.
        int length;         ///< In samples, as decoded.
        int skipped;        ///< Of these, what the encoder put in front.
        int sampleRate;
    };

    SampleClock(MediaInput const& input, AVStream& stream, FirstBlock const& first);

    /// The sample at which the block with this stamp begins. `expected`: where the block before it
    /// ended, when blocks are read one after the other.
    std::int64_t position(std::int64_t stamp, std::optional<std::int64_t> expected) const;

    /// The stamp to seek to for a sample.
    std::int64_t stampOf(std::int64_t position) const;

    /// The sample from which on only the encoder's padding follows, where the container tells.
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
    std::int64_t m_anchor = 0;             ///< Of the first block.
    std::int64_t m_grid = 1;               ///< Blocks begin at multiples of it from the anchor.
    std::int64_t m_stampUnit = 1;          ///< In samples, rounded up.
    std::vector<std::int64_t> m_positions; ///< Of each entry of the file's index, or empty.
    std::optional<std::int64_t> m_end;
};

} // namespace framewright
