#include "editor/selection/selection.h"

#include <algorithm>

namespace framewright {

namespace {

/// The track of a caption bar; null when there is no such bar.
Track const* trackOfBar(Project const& project, Id const& bar)
{
    for (Track const& track : project.tracks) {
        if (!track.subtitles)
            continue;
        auto const& bars = (*track.subtitles)->bars;
        if (std::ranges::find(bars, bar, &CaptionBar::id) != bars.end())
            return &track;
    }
    return nullptr;
}

} // namespace

Selection::Selection(Document const& document, QObject* parent)
    : QObject(parent), m_document(document)
{
    connect(&document, &Document::changed, this, &Selection::follow);
}

void Selection::selectClips(std::span<Id const> clips)
{
    std::vector<Id> selected;
    for (Id const& id : clips) {
        auto const place = findClip(m_document.project(), id);
        if (!place)
            continue;
        selected.push_back(id);
        m_activeTrack = place->track->id;
    }
    m_clips = std::move(selected);
    m_bar.reset();
    emit changed();
}

void Selection::selectBar(Id const& bar)
{
    m_clips.clear();
    m_bar.reset();
    if (Track const* const track = trackOfBar(m_document.project(), bar)) {
        m_bar = bar;
        m_activeTrack = track->id;
    }
    emit changed();
}

void Selection::clear()
{
    selectClips({});
}

void Selection::seek(double time)
{
    m_playhead = std::max(0.0, time);
    emit playheadMoved(m_playhead);
}

void Selection::follow(ProjectChange const& change)
{
    using Kind = ProjectChange::Kind;
    if (change.kind == Kind::opened || change.kind == Kind::closed) {
        m_clips.clear();
        m_bar.reset();
        m_activeTrack.reset();
        seek(0);
    }
    Project const& project = m_document.project();
    auto const before = std::tuple(m_clips, m_bar, m_activeTrack);
    std::erase_if(m_clips, [&](Id const& id) { return !findClip(project, id); });
    if (m_bar && !trackOfBar(project, *m_bar))
        m_bar.reset();
    if (m_activeTrack && !project.track(*m_activeTrack))
        m_activeTrack.reset();
    if (!m_activeTrack && !project.tracks.empty())
        m_activeTrack = project.tracks.front().id;
    if (before != std::tuple(m_clips, m_bar, m_activeTrack))
        emit changed();
}

} // namespace framewright
