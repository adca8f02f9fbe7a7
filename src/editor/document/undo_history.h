#pragma once

#include "model/project.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

/// The steps that can be undone and redone: each holds the project before it and a name.
///
/// A step costs what its edit changed: projects share what they have in common. When the steps
/// together exceed the limit, the oldest are dropped, but `fewestSteps` always remain.
class UndoHistory {
public:
    static constexpr std::size_t memoryLimit = std::size_t{256} << 20; ///< Bytes.
    static constexpr std::size_t fewestSteps = 100;

    /// The project before a change, and the name the user reads.
    struct Step {
        Project project;
        std::string actionName;
    };

    explicit UndoHistory(std::size_t memory = memoryLimit) : m_memoryLimit(memory) {}

    /// Adds the step from `before` to `after`. What was undone can no longer be redone.
    void record(Project before, Project const& after, std::string actionName);

    /// Undoes the last step: gives the project before it, and keeps `current` for redo.
    /// Nothing when there is no step.
    std::optional<Step> undo(Project current);
    std::optional<Step> redo(Project current);

    void clear();

    /// Changes every project in the history: for facts that hold at all times, such as where a file
    /// is.
    void forEachProject(std::function<void(Project&)> const& change);

    std::size_t undoCount() const { return m_undo.size(); }
    std::size_t redoCount() const { return m_redo.size(); }
    std::optional<std::string> undoName() const;
    std::optional<std::string> redoName() const;

    /// Bytes held by the undo steps beyond what the open project holds itself; an estimate.
    std::size_t memory() const { return m_memory; }

private:
    struct Entry {
        Step step;
        std::size_t cost;
    };

    void add(Entry entry);

    std::size_t m_memoryLimit;
    std::deque<Entry> m_undo; ///< Oldest first.
    std::vector<Entry> m_redo;
    std::size_t m_memory = 0;
};

} // namespace framewright
