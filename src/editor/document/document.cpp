#include "editor/document/document.h"

#include <utility>

namespace framewright {

using Kind = ProjectChange::Kind;

void Document::commit(Project project, std::string const& step, Author author)
{
    m_history.record(m_project, project, step);
    replace(Kind::edit, std::move(project), step, author);
}

std::optional<std::string> Document::undo(Author author)
{
    auto step = m_history.undo(m_project);
    if (!step)
        return std::nullopt;
    replace(Kind::undo, std::move(step->project), step->actionName, author);
    return std::move(step->actionName);
}

std::optional<std::string> Document::redo(Author author)
{
    auto step = m_history.redo(m_project);
    if (!step)
        return std::nullopt;
    replace(Kind::redo, std::move(step->project), step->actionName, author);
    return std::move(step->actionName);
}

void Document::correctFacts(std::function<void(Project&)> const& correct)
{
    Project project = m_project;
    correct(project);
    m_history.forEachProject(correct);
    replace(Kind::facts, std::move(project), {}, Author::editor);
}

void Document::open(Project project)
{
    m_history.clear();
    m_isOpen = true;
    replace(Kind::opened, std::move(project), {}, Author::editor);
}

void Document::close()
{
    m_history.clear();
    m_isOpen = false;
    replace(Kind::closed, Project(), {}, Author::editor);
}

void Document::replace(Kind kind, Project project, std::string step, Author author)
{
    ProjectChange change{
        kind, std::exchange(m_project, std::move(project)), {}, std::move(step), author};
    change.after = m_project;
    ++m_revision;
    emit changed(change);
}

} // namespace framewright
