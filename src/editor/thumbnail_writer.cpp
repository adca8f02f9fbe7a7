#include "editor/thumbnail_writer.h"

#include "tasks/on_worker.h"
#include "platform/atomic_file.h"
#include "workspace/workspace.h"

#include <QLoggingCategory>

#include <algorithm>

namespace framewright {

namespace {

constexpr int thumbnailWidth = 270;

/// A moment that shows something: a little into the piece, past a first frame that may be black.
double momentOf(Project const& project)
{
    return std::min(1.0, project.videoDuration() / 2);
}

} // namespace

ThumbnailWriter::ThumbnailWriter(AppState& editor, StillFrames& stills, QObject* parent)
    : QObject(parent), m_editor(editor), m_stills(stills)
{
    connect(&editor, &AppState::compositionOutdated, this, [this] { m_isOutdated = true; });
    connect(&editor, &AppState::saved, this, [this] { write(); });
}

QCoro::Task<void> ThumbnailWriter::write()
{
    if (m_isWriting || !m_isOutdated || !m_editor.isWorkspaceProject() ||
        m_editor.project().videoDuration() <= 0)
        co_return;
    QPointer<ThumbnailWriter> const self(this);
    m_isWriting = true;
    m_isOutdated = false;
    co_await m_editor.refreshAssets();
    if (self && m_editor.isWorkspaceProject()) {
        auto const draw = [&stills = m_stills, project = m_editor.project(),
                           assets = m_editor.assets(),
                           file = Workspace::thumbnailFile(m_editor.projectFile()->parent_path())] {
            auto const png = stills.png(project, assets, momentOf(project), thumbnailWidth);
            writeFileAtomically(file, {reinterpret_cast<char const*>(png.data()), png.size()});
        };
        try {
            co_await onWorker(draw);
        } catch (std::exception const& error) {
            // The project itself is saved; a picture of it is not worth an alarm.
            qWarning("The thumbnail was not written: %s", error.what());
        }
    }
    if (self)
        m_isWriting = false;
}

} // namespace framewright
