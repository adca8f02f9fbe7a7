#include "editor/thumbnail_writer.h"

#include "platform/atomic_file.h"
#include "tasks/on_worker.h"
#include "workspace/workspace.h"

#include <QLoggingCategory>

#include <algorithm>

namespace framewright {

namespace {

constexpr int thumbnailWidth = 270;

/// A time a little past the first frame, which may be black.
double representativeTime(Project const& project)
{
    return std::min(1.0, project.videoDuration() / 2);
}

} // namespace

ThumbnailWriter::ThumbnailWriter(AppState& editor, StillFrames& stills, QObject* parent)
    : QObject(parent), m_editor(editor), m_stills(stills)
{
    connect(&editor.document(), &Document::changed, this, [this](ProjectChange const& change) {
        // An import alone changes no frame.
        if (!(change.before.tracks == change.after.tracks &&
              change.before.aspect == change.after.aspect))
            m_isOutdated = true;
    });
    connect(&editor.media(), &MediaPool::changed, this, [this] { m_isOutdated = true; });
    connect(&editor.files(), &ProjectFiles::saved, this, [this] { write(); });
}

QCoro::Task<void> ThumbnailWriter::write()
{
    if (m_isWriting || !m_isOutdated || !m_editor.files().isInWorkspace() ||
        m_editor.project().videoDuration() <= 0)
        co_return;
    QPointer<ThumbnailWriter> const self(this);
    m_isWriting = true;
    m_isOutdated = false;
    co_await m_editor.media().refresh();
    if (self && m_editor.files().isInWorkspace()) {
        auto const draw =
            [&stills = m_stills, project = m_editor.project(), assets = m_editor.media().store(),
             file = Workspace::thumbnailFile(m_editor.files().file()->parent_path())] {
                auto const png =
                    stills.png(project, assets, representativeTime(project), thumbnailWidth);
                writeFileAtomically(file, {reinterpret_cast<char const*>(png.data()), png.size()});
            };
        try {
            co_await onWorker(draw);
        } catch (std::exception const& error) {
            // The project itself is saved; a missing thumbnail is not worth a report.
            qWarning("The thumbnail was not written: %s", error.what());
        }
    }
    if (self)
        m_isWriting = false;
}

} // namespace framewright
