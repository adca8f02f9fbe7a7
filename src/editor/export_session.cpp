#include "editor/export_session.h"

#include "tasks/next_emission.h"
#include "tasks/on_worker.h"

#include <algorithm>

namespace framewright {

namespace {

bool isSource(decltype(Project::assets) const& assets, std::filesystem::path const& file)
{
    return std::ranges::any_of(*assets, [&](auto const& entry) {
        std::error_code failed;
        std::filesystem::path const source = entry.second.url.path;
        return source == file || std::filesystem::equivalent(source, file, failed);
    });
}

} // namespace

/// Marks a session as running; the caller's stop token and the session can both cancel it.
class ExportSession::Running {
public:
    Running(ExportSession& session, std::filesystem::path const& file, std::stop_token stop)
        : m_session(session), m_whenStopped(std::move(stop), Stop{session.m_stop})
    {
        session.m_isRunning = true;
        session.m_file = file;
    }
    ~Running()
    {
        m_session.m_isRunning = false;
        emit m_session.ended();
    }
    Running(Running const&) = delete;
    Running& operator=(Running const&) = delete;

private:
    struct Stop {
        std::stop_source source;
        void operator()() { source.request_stop(); }
    };

    ExportSession& m_session;
    std::stop_callback<Stop> m_whenStopped;
};

QCoro::Task<Outcome<ExportResult>> ExportSession::run(ExportSettings settings,
                                                      ExportProgress progress, std::stop_token stop)
{
    if (m_isRunning)
        co_return Refusal{Reason::exportRunning};
    m_stop = std::stop_source();
    Running const running(*this, settings.file, stop);

    Exporter const exporter(m_editor.project(), m_editor.media().store(), m_burner, settings);
    auto const check = [assets = m_editor.project().assets,
                        file = settings.file]() -> std::optional<Refusal> {
        if (isSource(assets, file))
            return Refusal{Reason::exportOverSource};
        return targetProblem(file);
    };
    std::optional<Refusal> const refusal = co_await onWorker(check);
    if (refusal)
        co_return *refusal;
    auto const render = [exporter, progress, own = m_stop.get_token()] {
        return exporter.run(progress, own);
    };
    co_return co_await onWorker(render);
}

QCoro::Task<void> ExportSession::cancel()
{
    m_stop.request_stop();
    while (m_isRunning)
        co_await NextEmission(this, &ExportSession::ended);
}

} // namespace framewright
