#pragma once

#include "editor/app_state.h"
#include "export/exporter.h"

#include <QCoro/QCoroTask>
#include <QObject>

#include <filesystem>
#include <memory>
#include <stop_token>

namespace framewright {

/// The export that is under way, of which there is one at a time.
///
/// It renders a snapshot on a worker thread; editing goes on. Main thread only.
class ExportSession : public QObject {
    Q_OBJECT

public:
    ExportSession(AppState& editor, std::shared_ptr<CaptionBurner const> burner)
        : m_editor(editor), m_burner(std::move(burner))
    {
    }

    bool isRunning() const { return m_isRunning; }

    /// What the export that runs will write.
    std::filesystem::path const& file() const { return m_file; }

    /// Renders the open project as it is when this is called, with its files as AppState knows
    /// them: refresh those before. Refused while another export runs, onto one of the project's own
    /// files, and where no file can be. Throws ExportError. `progress` is called on a worker
    /// thread.
    QCoro::Task<Outcome<ExportResult>> run(ExportSettings settings, ExportProgress progress,
                                           std::stop_token stop);

    /// Cancels the export that runs, if any. Ends when it has ended, and whoever awaited it knows.
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
