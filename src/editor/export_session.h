#pragma once

#include "editor/app_state.h"
#include "export/exporter.h"

#include <QCoro/QCoroTask>
#include <QObject>

#include <filesystem>
#include <memory>
#include <stop_token>

namespace framewright {

/// The running export. There is one at a time.
///
/// It renders a snapshot on a worker thread; editing continues. Main thread only.
class ExportSession : public QObject {
    Q_OBJECT

public:
    ExportSession(AppState& editor, std::shared_ptr<CaptionBurner const> burner)
        : m_editor(editor), m_burner(std::move(burner))
    {
    }

    bool isRunning() const { return m_isRunning; }

    /// The file the running export writes.
    std::filesystem::path const& file() const { return m_file; }

    /// Renders the open project as it is now, with its files as the media pool knows them: refresh
    /// those first. Refused while another export runs, onto one of the project's own files, and
    /// where no file can be written. Throws ExportError. `progress` is called on a worker.
    QCoro::Task<Outcome<ExportResult>> run(ExportSettings settings, ExportProgress progress,
                                           std::stop_token stop);

    /// Cancels the running export, if any. Ends when its caller has been answered.
    QCoro::Task<void> cancel();

signals:
    void ended();

private:
    class Running;

    AppState& m_editor;
    std::shared_ptr<CaptionBurner const> m_burner;
    bool m_isRunning = false;
    std::filesystem::path m_file;
    std::stop_source m_stop;
};

} // namespace framewright
