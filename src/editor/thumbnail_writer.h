#pragma once

#include "editor/app_state.h"
#include "stills/still_frames.h"

#include <QObject>

namespace framewright {

/// Keeps the thumbnail of a workspace project current: a frame of it, drawn on a worker after each
/// save that changed its frames. Main thread only.
class ThumbnailWriter : public QObject {
    Q_OBJECT

public:
    ThumbnailWriter(AppState& editor, StillFrames& stills, QObject* parent = nullptr);

private:
    QCoro::Task<void> write();

    AppState& m_editor;
    StillFrames& m_stills;
    bool m_isOutdated = false;
    bool m_isWriting = false;
};

} // namespace framewright
