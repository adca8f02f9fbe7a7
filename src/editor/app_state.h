#pragma once

#include "editor/document/document.h"
#include "editor/files/project_files.h"
#include "editor/media_pool/media_pool.h"
#include "editor/selection/selection.h"
#include "platform/user_defaults.h"

#include <QObject>

#include <filesystem>
#include <optional>
#include <string>

namespace framewright {

/// The editor's state: wires its rooms, and is the only way to change the open project.
///
///     document()   the project, its history, a signal for each change
///     selection()  selected clips, playhead, clipboard
///     media()      the files behind the project's assets
///     files()      the file the project is kept in
///
/// What people and agents can do is in editor/commands; every command ends in `commit`, which makes
/// one undo step of it and schedules its save. Main thread only. It may be destroyed while files
/// are read or written in the background; tasks that a caller awaits must not outlive it.
class AppState : public QObject {
    Q_OBJECT

public:
    explicit AppState(UserDefaults& defaults, QObject* parent = nullptr);

    Document const& document() const { return m_document; }
    Project const& project() const { return m_document.project(); }
    bool isOpen() const { return m_document.isOpen(); }

    Selection& selection() { return m_selection; }
    Selection const& selection() const { return m_selection; }
    MediaPool& media() { return m_media; }
    MediaPool const& media() const { return m_media; }
    ProjectFiles& files() { return m_files; }
    ProjectFiles const& files() const { return m_files; }
    UserDefaults& defaults() { return m_defaults; }

    /// Makes `project` the open one, as one step under the name of its menu command.
    void commit(Project project, std::string const& step, Author author);

    /// The name of the step undone or redone; nothing when there is none.
    std::optional<std::string> undo(Author author) { return m_document.undo(author); }
    std::optional<std::string> redo(Author author) { return m_document.redo(author); }

    /// Makes a folder the current workspace, and the first of the recent ones.
    void setWorkspace(std::filesystem::path const& folder);

signals:
    void workspaceChanged();

private:
    UserDefaults& m_defaults;
    Document m_document;
    Selection m_selection;
    MediaPool m_media;
    ProjectFiles m_files;
};

} // namespace framewright
