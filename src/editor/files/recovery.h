#pragma once

#include "model/project.h"
#include "platform/user_defaults.h"

#include <filesystem>
#include <optional>
#include <string>

namespace framewright {

/// The copy of the open project that exists exactly while the project's own file does not hold it:
/// outside any workspace until the user saves, elsewhere while the file can't be written.
///
/// A copy left by an earlier run waits until the user restores or discards it; it is never
/// overwritten. `write` may be called from any thread, one at a time; the rest on the main thread.
class Recovery {
public:
    explicit Recovery(UserDefaults& defaults);

    /// A copy left by an earlier run.
    struct Waiting {
        std::filesystem::path file;
        std::optional<std::filesystem::path> origin; ///< The file of the project it is a copy of.
    };
    std::optional<Waiting> const& waiting() const { return m_waiting; }

    /// The file of this run's copy.
    std::filesystem::path const& file() const { return m_file; }

    /// Stores which project this run's copy belongs to; nothing while none is open.
    void rememberOrigin(std::optional<std::filesystem::path> const& origin);

    /// The waiting copy was opened: it is this run's own copy from now on.
    void adoptWaiting();

    /// Deletes the waiting copy.
    void discardWaiting();

    /// Deletes this run's copy, if there is one.
    void clear();

    /// Writes `project` as the copy in `file`. Blocks. Throws ProjectFileError.
    static void write(std::filesystem::path const& file, Project const& project);

private:
    UserDefaults& m_defaults;
    std::filesystem::path m_file;
    std::optional<Waiting> m_waiting;
};

} // namespace framewright
