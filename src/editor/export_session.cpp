#include "editor/export_session.h"

#include "editor/worker_task.h"

#include <algorithm>

namespace framewright {

namespace {

bool isSource(Project const& project, std::filesystem::path const& file)
{
    std::error_code failed;
    return std::ranges::any_of(*project.assets, [&](auto const& entry) {
        std::filesystem::path const source = entry.second.url.path;
        return source == file || std::filesystem::equivalent(source, file, failed);
    });
}

class Running {
public:
    explicit Running(bool& flag) : m_flag(flag) { m_flag = true; }
    ~Running() { m_flag = false; }
    Running(Running const&) = delete;
    Running& operator=(Running const&) = delete;

private:
    bool& m_flag;
};

} // namespace

QCoro::Task<Outcome<ExportResult>> ExportSession::run(ExportSettings settings,
                                                      ExportProgress progress, std::stop_token stop)
{
    if (m_isRunning)
        co_return Refusal{"An export is already running."};
    if (isSource(m_editor.project(), settings.file))
        co_return Refusal{"That path is one of the project's source files; export somewhere else."};
    Running const running(m_isRunning);

    co_await m_editor.assetsLoaded();
    Exporter const exporter(m_editor.project(), m_editor.assets(), m_burner, std::move(settings));
    auto const render = [exporter, progress, stop] { return exporter.run(progress, stop); };
    co_return co_await onWorker(render);
}

} // namespace framewright
