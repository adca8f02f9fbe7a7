#pragma once

#include "editor/app_state.h"
#include "render/exporter.h"

#include <QCoro/QCoroTask>

#include <filesystem>
#include <memory>
#include <stop_token>

namespace framewright {

/// The export that is under way, of which there is one at a time.
///
/// It renders a snapshot on a worker thread; editing goes on. Main thread only.
class ExportSession {
public:
    ExportSession(AppState& editor, std::shared_ptr<CaptionBurner const> burner)
        : m_editor(editor), m_burner(std::move(burner))
    {
    }

    bool isRunning() const { return m_isRunning; }

    /// Renders the open project as it is now. Refused while another export runs, and onto one of
    /// the project's own files. Throws ExportError. `progress` is called on a worker thread.
    QCoro::Task<Outcome<ExportResult>> run(ExportSettings settings, ExportProgress progress,
                                           std::stop_token stop);

private:
    AppState& m_editor;
    std::shared_ptr<CaptionBurner const> m_burner;
    bool m_isRunning = false;
};

} // namespace framewright
