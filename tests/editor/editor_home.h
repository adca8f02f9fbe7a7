#pragma once

#include "platform/test_folder.h"

#include "editor/commands/editing.h"
#include "workspace/project_folders.h"
#include "workspace/workspace.h"

#include <QCoro/QCoroTask>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <functional>

namespace framewright {

inline void awaited(QCoro::Task<void> task);

/// A temporary home with a workspace and an editor in it.
class EditorHome {
public:
    EditorHome()
        : m_home("HOME", folder.path().c_str()),
          m_data("XDG_DATA_HOME", nullptr),
          m_cache("XDG_CACHE_HOME", nullptr),
          m_config("XDG_CONFIG_HOME", nullptr),
          defaults(folder / "settings.ini")
    {
        Workspace::setUp(workspace());
        restart();
    }

    std::filesystem::path workspace() const { return folder / "workspace"; }

    /// The editor after a crash and a new start.
    void restart()
    {
        m_editor.reset();
        m_editor = std::make_unique<AppState>(defaults);
    }

    AppState& editor() { return *m_editor; }
    ProjectFiles& files() { return m_editor->files(); }
    Editing editing() { return {*m_editor, Author::commandLine}; }

    /// Starts a project in the workspace and opens it. Gives its file.
    std::filesystem::path startProject(std::string const& name)
    {
        auto const file = Workspace::projectFile(*createProjectFolder(workspace(), name));
        awaited(files().create(file, newProject()));
        return file;
    }

    TestFolder folder;

private:
    TestVariable m_home, m_data, m_cache, m_config;

public:
    UserDefaults defaults;

private:
    std::unique_ptr<AppState> m_editor;
};

/// Runs the event loop until `condition` holds. False if that takes more than ten seconds.
inline bool eventually(std::function<bool()> const& condition)
{
    QEventLoop loop;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        if (condition())
            loop.quit();
    });
    QTimer::singleShot(10000, &loop, &QEventLoop::quit);
    look.start(5);
    if (!condition())
        loop.exec();
    return condition();
}

/// Runs the event loop until a task ends; gives its result or throws what it threw.
template <class T>
T awaited(QCoro::Task<T> task)
{
    std::optional<T> result;
    awaited([](QCoro::Task<T> inner, std::optional<T>& place) -> QCoro::Task<void> {
        place.emplace(co_await std::move(inner));
    }(std::move(task), result));
    return std::move(*result);
}

inline void awaited(QCoro::Task<void> task)
{
    // Caught here: a task that throws would never end the wait.
    std::exception_ptr thrown;
    QCoro::waitFor([](QCoro::Task<void> inner, std::exception_ptr& place) -> QCoro::Task<void> {
        try {
            co_await std::move(inner);
        } catch (...) {
            place = std::current_exception();
        }
    }(std::move(task), thrown));
    if (thrown)
        std::rethrow_exception(thrown);
}

/// An edit that a test can recognise: of the project's brief.
inline void setBrief(AppState& editor, std::string const& brief)
{
    Project project = editor.project();
    project.brief = brief;
    editor.commit(std::move(project), "Change Brief", Author::commandLine);
}

inline std::string briefIn(std::filesystem::path const& file)
{
    return readProject(file).project().brief.value_or("");
}

} // namespace framewright
