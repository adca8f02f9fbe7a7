#include "media/internal/sample_clock.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace framewright {

namespace {

/// Seconds by which a timestamp may be off before it counts as a real gap or overlap: below what is
/// noticed between lips and voice, above the jitter of phones.
constexpr double jitter = 0.02;

/// A deviation of this many seconds, to the same side for this many blocks, is real.
constexpr double persistentShift = 0.01;
constexpr int persistentBlocks = 8;

bool isPcm(AVCodecID codec)
{
    return codec >= AV_CODEC_ID_FIRST_AUDIO && codec < AV_CODEC_ID_ADPCM_IMA_QT;
}

} // namespace

SampleClock::SampleClock(MediaInput const& input, AVStream& stream, FirstBlock const& first)
    : m_stream(stream),
      m_zero(input.zero(stream)),
      m_rate(first.sampleRate),
      m_stampUnit(av_rescale_q_rnd(1, stream.time_base, {1, m_rate}, AV_ROUND_UP))
{
    bool const isMov = input.container().isMov();
    AVCodecID const codec = stream.codecpar->codec_id;
    std::int64_t const raw = stamped(first.stamp);
    // Vorbis blocks vary in length.
    m_grid = codec == AV_CODEC_ID_VORBIS ? 1 : std::max(1, first.length);
    // Undo the rounding of the first timestamp: streams begin at the encoder delay or on the grid.
    std::int64_t const multiple = std::llround(double(raw) / double(m_grid)) * m_grid;
    m_anchor = raw;
    if (std::abs(raw + first.skipped) <= m_stampUnit)
        m_anchor = -first.skipped;
    else if (std::abs(raw - multiple) <= m_stampUnit)
        m_anchor = multiple;

    if (isMov && !isPcm(codec))
        placeBlocks(first.length);
    if (isMov)
        findEndOfAudio(input, first);
}

std::int64_t SampleClock::stamped(std::int64_t stamp) const
{
    return av_rescale_q(stamp - m_zero, m_stream.time_base, {1, m_rate});
}

std::int64_t SampleClock::stampOf(std::int64_t position) const
{
    return m_zero + av_rescale_q(position, {1, m_rate}, m_stream.time_base);
}

bool SampleClock::isNear(std::int64_t a, std::int64_t b) const
{
    return std::abs(a - b) <= std::int64_t(jitter * m_rate);
}

/// Whether this block of the index and the next ones all deviate to the same side if this one is
/// placed at `expected`.
bool SampleClock::isPersistentlyShifted(int entry, std::int64_t expected, int blockLength) const
{
    auto const least = std::int64_t(persistentShift * m_rate);
    auto const shift = [&](int i) {
        std::int64_t const raw =
            stamped(avformat_index_get_entry(&m_stream, entry + i)->timestamp) - expected -
            std::int64_t(i) * blockLength;
        return raw > least ? 1 : raw < -least ? -1 : 0;
    };
    int const side = shift(0);
    if (side == 0 || entry + persistentBlocks > avformat_index_get_entries_count(&m_stream))
        return false;
    for (int i = 1; i < persistentBlocks; ++i) {
        if (shift(i) != side)
            return false;
    }
    return true;
}

void SampleClock::placeBlocks(int blockLength)
{
    int const count = avformat_index_get_entries_count(&m_stream);
    m_positions.reserve(std::size_t(count));
    bool isAsStamped = true;
    std::int64_t expected = m_anchor;
    for (int i = 0; i < count; ++i) {
        std::int64_t const raw = stamped(avformat_index_get_entry(&m_stream, i)->timestamp);
        bool const follows =
            isNear(raw, expected) && !isPersistentlyShifted(i, expected, blockLength);
        std::int64_t const position = follows ? expected : raw;
        isAsStamped = isAsStamped && position == raw && (follows || i == 0);
        m_positions.push_back(position);
        expected = position + blockLength;
    }
    if (isAsStamped)
        m_positions = {};
}

void SampleClock::findEndOfAudio(MediaInput const& input, FirstBlock const& first)
{
    int const count = avformat_index_get_entries_count(&m_stream);
    if (count == 0 || m_stream.duration == AV_NOPTS_VALUE || m_stream.duration <= 0)
        return;
    // The duration excludes the encoder delay if there is an edit list, and includes it otherwise.
    bool const isLeadInCounted = input.zero(m_stream) > 0;
    std::int64_t const begin = stamped(avformat_index_get_entry(&m_stream, 0)->timestamp) +
                               (isLeadInCounted ? 0 : first.skipped);
    std::int64_t const end =
        begin + av_rescale_q(m_stream.duration, m_stream.time_base, {1, m_rate});
    // A fragmented file's duration may be that of its first fragment only.
    std::int64_t const lastBlock =
        stamped(avformat_index_get_entry(&m_stream, count - 1)->timestamp);
    if (lastBlock < end + 4 * std::int64_t(first.length))
        m_end = end;
}

std::int64_t SampleClock::position(std::int64_t stamp, std::optional<std::int64_t> expected) const
{
    if (!m_positions.empty()) {
        int const entry =
            av_index_search_timestamp(&m_stream, stamp, AVSEEK_FLAG_ANY | AVSEEK_FLAG_BACKWARD);
        if (entry >= 0 && std::size_t(entry) < m_positions.size() &&
            avformat_index_get_entry(&m_stream, entry)->timestamp == stamp)
            return m_positions[std::size_t(entry)];
    }
    std::int64_t const raw = stamped(stamp);
    if (expected && isNear(raw, *expected))
        return *expected;
    std::int64_t const snapped =
        m_anchor + std::llround(double(raw - m_anchor) / double(m_grid)) * m_grid;
    return std::abs(snapped - raw) <= m_stampUnit ? snapped : raw;
}

} // namespace framewright
