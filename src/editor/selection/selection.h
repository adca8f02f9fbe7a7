#pragma once

#include "editor/document/document.h"
#include "model/clip_placing.h"

#include <QObject>

#include <optional>
#include <span>
#include <vector>

namespace framewright {

/// What the user points at: selected clips or a caption bar, the active track, the playhead, and
/// what was copied.
///
/// It follows the document: what an edit or undo removed is deselected. Main thread only.
class Selection : public QObject {
    Q_OBJECT

public:
    explicit Selection(Document const& document, QObject* parent = nullptr);

    /// The selected clips, in the order they were selected.
    std::vector<Id> const& clips() const { return m_clips; }
    /// The selected caption bar. Never together with clips.
    std::optional<Id> const& bar() const { return m_bar; }
    /// The track that edits without a clip apply to: the last one something was selected on, else
    /// the first. Nothing in a project without tracks.
    std::optional<Id> const& activeTrack() const { return m_activeTrack; }

    /// Selects these and nothing else. Ids that are not on the timeline are ignored.
    void selectClips(std::span<Id const> clips);
    void selectClip(Id const& clip) { selectClips(std::span(&clip, 1)); }
    void selectBar(Id const& bar);
    void clear();

    /// Seconds, from 0 on.
    double playhead() const { return m_playhead; }
    /// A negative time is 0.
    void seek(double time);

    std::vector<CopiedClip> const& clipboard() const { return m_clipboard; }
    void copy(std::vector<CopiedClip> clips) { m_clipboard = std::move(clips); }

signals:
    /// Other clips, another bar or another active track.
    void changed();
    void playheadMoved(double time);

private:
    void follow(ProjectChange const& change);

    Document const& m_document;
    std::vector<Id> m_clips;
    std::optional<Id> m_bar;
    std::optional<Id> m_activeTrack;
    double m_playhead = 0;
    std::vector<CopiedClip> m_clipboard;
};

} // namespace framewright
