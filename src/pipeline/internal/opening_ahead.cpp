#include "pipeline/internal/opening_ahead.h"

#include <chrono>
#include <utility>

namespace framewright {

OpeningAhead::OpeningAhead(int threads, ReadingActivity activity)
    : m_threads(threads), m_activity(std::move(activity))
{
}

bool OpeningAhead::has(CompositionTrackID track, CompositionSegment const& segment) const
{
    auto const found = m_preparations.find(track);
    return found != m_preparations.end() && found->second.isFor(segment);
}

void OpeningAhead::prepare(CompositionTrackID track, CompositionSegment const& segment,
                           std::optional<OpenReader> idle)
{
    drop(track);
    if (isBusy())
        return;
    auto open = [file = segment.file, start = segment.sourceStart, idle = std::move(idle),
                 threads = m_threads,
                 activity = m_activity]() mutable -> std::optional<OpenReader> {
        try {
            if (!idle)
                idle = OpenReader{FileIdentity::of(file),
                                  std::make_shared<VideoReader>(file, threads, activity)};
            idle->reader->frameAt(start);
            return std::move(idle);
        } catch (...) {
            return std::nullopt; // Drawing meets the same failure, if it ever comes here.
        }
    };
    m_preparations.insert_or_assign(track,
                                    Preparation{segment.file, segment.sourceStart,
                                                std::async(std::launch::async, std::move(open))});
}

void OpeningAhead::drop(CompositionTrackID track)
{
    auto const found = m_preparations.find(track);
    if (found == m_preparations.end())
        return;
    m_dropped.push_back(std::move(found->second));
    m_preparations.erase(found);
    isBusy(); // Releases it if it is finished.
}

void OpeningAhead::dropAll()
{
    while (!m_preparations.empty())
        drop(m_preparations.begin()->first);
}

std::optional<OpenReader> OpeningAhead::take(CompositionTrackID track,
                                             CompositionSegment const& segment)
{
    if (!has(track, segment))
        return std::nullopt;
    auto opened = m_preparations.extract(track).mapped().opened.get();
    if (opened && opened->identity != FileIdentity::of(segment.file))
        return std::nullopt;
    return opened;
}

bool OpeningAhead::isBusy()
{
    std::erase_if(m_dropped, [](Preparation const& preparation) {
        return preparation.opened.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    return !m_dropped.empty();
}

} // namespace framewright
