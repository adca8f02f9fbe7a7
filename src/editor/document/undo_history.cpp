#include "editor/document/undo_history.h"

#include <algorithm>

namespace framewright {

namespace {

std::size_t textSize(std::optional<std::string> const& text)
{
    return text ? text->capacity() : 0;
}

std::size_t clipsSize(std::vector<Clip> const& clips)
{
    std::size_t size = clips.capacity() * sizeof(Clip);
    for (Clip const& clip : clips)
        size += textSize(clip.placeholderName) + textSize(clip.placeholderNote);
    return size;
}

std::size_t subtitlesSize(SubtitleData const& data)
{
    std::size_t size = sizeof data + data.words.capacity() * sizeof(CaptionWord);
    for (CaptionBar const& bar : data.bars)
        size += sizeof bar + bar.text.capacity() + bar.words.capacity() * sizeof(CaptionWord);
    return size;
}

/// Roughly the bytes that `before` holds and `after` does not share.
std::size_t ownSize(Project const& before, Project const& after)
{
    std::size_t size = sizeof(UndoHistory::Step) + before.tracks.capacity() * sizeof(Track);
    if (!before.assets.isSameAs(after.assets))
        size += before.assets->size() * (sizeof(MediaAsset) + 256);
    for (Track const& track : before.tracks) {
        Track const* const later = after.track(track.id);
        if (!later || !track.clips.isSameAs(later->clips))
            size += clipsSize(*track.clips);
        bool const sharesSubtitles = later && track.subtitles && later->subtitles &&
                                     track.subtitles->isSameAs(*later->subtitles);
        if (track.subtitles && !sharesSubtitles)
            size += subtitlesSize(**track.subtitles);
    }
    return size;
}

} // namespace

void UndoHistory::record(Project before, Project const& after, std::string actionName)
{
    m_redo.clear();
    std::size_t const cost = ownSize(before, after);
    add({{std::move(before), std::move(actionName)}, cost});
}

void UndoHistory::add(Entry entry)
{
    m_memory += entry.cost;
    m_undo.push_back(std::move(entry));
    while (m_memory > m_memoryLimit && m_undo.size() > fewestSteps) {
        m_memory -= m_undo.front().cost;
        m_undo.pop_front();
    }
}

std::optional<UndoHistory::Step> UndoHistory::undo(Project current)
{
    if (m_undo.empty())
        return std::nullopt;
    Entry entry = std::move(m_undo.back());
    m_undo.pop_back();
    m_memory -= entry.cost;
    std::size_t const cost = ownSize(current, entry.step.project);
    m_redo.push_back({{std::move(current), entry.step.actionName}, cost});
    return std::move(entry.step);
}

std::optional<UndoHistory::Step> UndoHistory::redo(Project current)
{
    if (m_redo.empty())
        return std::nullopt;
    Entry entry = std::move(m_redo.back());
    m_redo.pop_back();
    std::size_t const cost = ownSize(current, entry.step.project);
    add({{std::move(current), entry.step.actionName}, cost});
    return std::move(entry.step);
}

void UndoHistory::forEachProject(std::function<void(Project&)> const& change)
{
    for (Entry& entry : m_undo)
        change(entry.step.project);
    for (Entry& entry : m_redo)
        change(entry.step.project);
}

void UndoHistory::clear()
{
    m_undo.clear();
    m_redo.clear();
    m_memory = 0;
}

std::optional<std::string> UndoHistory::undoName() const
{
    return m_undo.empty() ? std::nullopt : std::optional(m_undo.back().step.actionName);
}

std::optional<std::string> UndoHistory::redoName() const
{
    return m_redo.empty() ? std::nullopt : std::optional(m_redo.back().step.actionName);
}

} // namespace framewright
