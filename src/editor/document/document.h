#pragma once

#include "editor/document/undo_history.h"
#include "model/project.h"

#include <QObject>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace framewright {

/// Who made a change.
enum class Author {
    commandLine,
    window,
    disk,   ///< Another program, by writing the project's file.
    editor, ///< The editor itself: a fact was found out.
};

/// A change of the open project.
struct ProjectChange {
    enum class Kind {
        edit, ///< A new step of the history.
        undo,
        redo,
        facts,  ///< Something that holds for every step was corrected, such as a file's path.
        opened, ///< Another project is open now.
        closed,
    };

    Kind kind = Kind::edit;
    Project before;
    Project after;
    std::string step; ///< Name of the step made, undone or redone; empty for other kinds.
    Author author = Author::editor;
};

/// The open project and its history. It knows no files: who keeps the project listens to `changed`.
///
/// Main thread only.
class Document : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    bool isOpen() const { return m_isOpen; }
    /// Without tracks while nothing is open.
    Project const& project() const { return m_project; }
    UndoHistory const& history() const { return m_history; }

    /// Counted up by each change, so that a snapshot can be recognised as current.
    std::uint64_t revision() const { return m_revision; }

    /// Makes `project` the open one, as one step named `step`.
    void commit(Project project, std::string const& step, Author author);

    /// The name of the step undone or redone; nothing when there is none.
    std::optional<std::string> undo(Author author);
    std::optional<std::string> redo(Author author);

    /// Applies `correct` to the open project and to every step of the history. Not a step: what a
    /// file is and where it is are facts, which undo must not take back.
    void correctFacts(std::function<void(Project&)> const& correct);

    /// Opens a project, without history.
    void open(Project project);
    void close();

signals:
    /// After each change, with the document in its new state.
    void changed(ProjectChange const& change);

private:
    void replace(ProjectChange::Kind kind, Project project, std::string step, Author author);

    bool m_isOpen = false;
    Project m_project;
    UndoHistory m_history;
    std::uint64_t m_revision = 0;
};

} // namespace framewright
