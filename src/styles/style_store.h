#pragma once

#include "platform/user_defaults.h"
#include "styles/style_file.h"
#include "sync/file_watcher.h"

#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace framewright {

/// The saved looks of captions, or those of on-screen texts (the "favorites").
///
/// They live in the settings file of the workspace the store is attached to, and in the user's
/// defaults, which a new workspace starts with. The built-in looks are put in once: one that the
/// user deletes stays deleted, one that a later version brings is added then.
///
/// A change is written half a second later, on another thread. What another program writes into the
/// file is taken in at once, look by look. A file that does not decode is left alone: the looks
/// stay in memory, and `problem` says so. Lives on the main thread.
class StyleStore : public QObject {
    Q_OBJECT

public:
    /// What tells the two stores apart.
    struct Kind {
        std::string fileName;
        std::string listKey; ///< In the user's defaults, like the next two.
        std::string defaultKey;
        std::string seededKey; ///< The built-in looks that were ever put in, by id.
        std::span<CaptionStyle const> presets;
    };
    static Kind captions();
    static Kind texts();

    /// The looks of the user's defaults. Nothing is attached.
    StyleStore(Kind kind, UserDefaults& defaults, QObject* parent = nullptr);
    /// Writes what is pending.
    ~StyleStore() override;

    // Looking ----------------------------------------------------------------------------------

    std::vector<CaptionStyle> const& styles() const { return m_state.styles; }
    std::optional<Id> const& defaultID() const { return m_state.defaultID; }

    /// The one that is the default; without one the first, and of an empty list the first preset.
    CaptionStyle const& defaultStyle() const;

    /// By id; by name, where the very same one is preferred to one in another case.
    CaptionStyle const* style(Id const& id) const;
    CaptionStyle const* style(std::string const& name) const;

    /// The built-in looks that are not in the list.
    std::vector<CaptionStyle> missingPresets() const;

    /// `name`, or its stem and the first number from 2 on, so that no look is named alike in any
    /// case: "Neon", "Neon 2", "Neon 3".
    std::string uniqueName(std::string const& name) const;

    /// The names that more than one look has, as a file made by hand may say, or two editors that
    /// made looks at once.
    std::vector<std::string> namesHeldTwice() const;

    /// What keeps the looks from being read or written; empty when all is well.
    std::string const& problem() const { return m_problem; }
    /// What in the file was not taken as it stands, a sentence each.
    std::vector<std::string> const& notes() const { return m_notes; }
    std::optional<std::filesystem::path> const& file() const { return m_file; }
    std::string const& fileName() const { return m_kind.fileName; }
    std::span<CaptionStyle const> presets() const { return m_kind.presets; }

    // Changing ---------------------------------------------------------------------------------

    /// Replaces the look with the same id, else appends it. Its values are brought into range.
    void upsert(CaptionStyle style);
    /// Appends a copy under a name of its own, and gives it.
    CaptionStyle duplicate(CaptionStyle const& style);
    void remove(Id const& id);
    void setDefaultID(std::optional<Id> const& id);
    /// Puts a built-in look in again as it was made. One of the user's that has its name gets
    /// another, as `uniqueName` gives it.
    void addPreset(CaptionStyle const& preset);
    /// Puts all built-in looks in as they were made, before the user's own, which stay, but for
    /// their names, as in `addPreset`.
    void resetToPresets();

    // Keeping ----------------------------------------------------------------------------------

    /// Keeps the looks in this settings file from now on: its looks are taken, or, where there is
    /// no file, ours are written there. What is pending goes where it belonged.
    void attach(std::filesystem::path const& file);
    /// Keeps the looks in the user's defaults only from now on.
    void detach();

    /// Takes in what lies on disk. False when no looks could be read.
    bool reloadFromDisk();
    /// Has the looks written soon.
    void persist();
    /// Has them written now, on another thread.
    void write();
    /// The same when something is pending.
    void writePending();
    /// Has them written before it returns, when something is pending.
    void writeBeforeQuitting();

signals:
    void changed();

private:
    struct WriteResult {
        StyleFile ours; ///< What was to be written.
        std::optional<SavedStyles> saved;
        std::string problem;
    };
    /// What a write needs, as values.
    struct WriteJob {
        Kind kind;
        UserDefaults defaults;
        std::optional<std::filesystem::path> file;
        StyleFile base;
        StyleFile ours;
        std::optional<std::string> known;

        WriteResult run() &&;
        void writeDefaults(StyleFile const& styles);
    };

    void load();
    void setState(StyleFile state);
    void finishWriting();
    void takeResult(WriteResult const& result);
    void adopt(DecodedStyles theirs, std::string bytes);
    void addFreshPresets();

    Kind m_kind;
    UserDefaults m_defaults;
    std::optional<std::filesystem::path> m_file;
    StyleFile m_state;
    StyleFile m_base;                   ///< As last read or written.
    std::optional<std::string> m_known; ///< The bytes of the file as last read or written.
    std::vector<CaptionStyle> m_fresh;  ///< Built-in looks that this version brought.
    bool m_needsWriting = false;
    std::string m_problem;
    std::vector<std::string> m_notes;
    std::unique_ptr<FileWatcher> m_watcher;
    QTimer m_pendingWrite;
    std::shared_ptr<std::optional<WriteResult>> m_running; ///< Of the write under way.
    QThreadPool m_writer;                                  ///< One thread.
};

/// The two stores of an editor.
struct StyleStores {
    explicit StyleStores(UserDefaults& defaults);

    StyleStore captions;
    StyleStore texts;

    /// Attaches both to the settings of a workspace; detaches them where there is none.
    void follow(std::optional<std::filesystem::path> const& workspace);
    /// Has both write what is pending; at the same time as a project is saved.
    void syncStyles();
    void writeBeforeQuitting();
};

} // namespace framewright
