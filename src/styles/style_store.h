#pragma once

#include "platform/user_defaults.h"
#include "styles/style_list.h"
#include "sync/synced_file.h"

#include <QObject>

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace framewright {

/// The saved styles of captions, or those of on-screen texts (the "favorites").
///
/// They are kept in the settings file of the workspace the store is attached to, and in the user's
/// defaults, which a new workspace starts with. The built-in styles are added once: one that the
/// user deletes stays deleted, and one that a later version brings is added by that version.
///
/// A change is saved half a second later, on a worker. What another program writes is merged style
/// by style (sync/synced_file.h). A file that does not decode is left alone: the styles stay in
/// memory, and `problem` says so. Lives on the main thread.
class StyleStore : public QObject {
    Q_OBJECT

public:
    /// Where the two stores differ.
    struct Kind {
        std::string fileName;
        std::string listKey; ///< In the user's defaults, like the next two.
        std::string defaultKey;
        std::string seededKey; ///< The ids of all built-in styles ever added.
        std::span<CaptionStyle const> presets;
    };
    static Kind captions();
    static Kind texts();

    /// Starts with the styles of the user's defaults, attached to no file.
    StyleStore(Kind kind, UserDefaults& defaults, QObject* parent = nullptr);
    /// Saves what is pending.
    ~StyleStore() override;

    // Reading ----------------------------------------------------------------------------------

    std::vector<CaptionStyle> const& styles() const { return m_list.styles; }
    std::optional<Id> const& defaultID() const { return m_list.defaultID; }

    /// The default; without one the first style, and of an empty list the first preset.
    CaptionStyle const& defaultStyle() const;

    CaptionStyle const* style(Id const& id) const;
    /// An exact match is preferred to one that differs in case.
    CaptionStyle const* style(std::string const& name) const;

    /// The built-in styles that are not in the list.
    std::vector<CaptionStyle> missingPresets() const;

    /// `name`, or its stem and the first number from 2 on that no style has, in any case: "Neon",
    /// "Neon 2", "Neon 3".
    std::string uniqueName(std::string const& name) const;

    /// The names that more than one style has, as in a file edited by hand, or when two editors
    /// added styles at once.
    std::vector<std::string> duplicateNames() const;

    /// What keeps the styles from being read or saved; empty when all is well.
    std::string const& problem() const;
    /// What was corrected while reading the file, a sentence each.
    std::vector<std::string> const& notes() const { return m_file.notes(); }
    std::optional<std::filesystem::path> const& file() const { return m_file.file(); }
    std::string const& fileName() const { return m_kind.fileName; }
    std::span<CaptionStyle const> presets() const { return m_kind.presets; }

    // Changing ---------------------------------------------------------------------------------

    /// Replaces the style with the same id, else appends it. Its values are brought into range.
    void upsert(CaptionStyle style);
    /// Appends a copy under a unique name, and returns it.
    CaptionStyle duplicate(CaptionStyle const& style);
    void remove(Id const& id);
    void setDefaultID(std::optional<Id> const& id);
    /// Restores a built-in style. A style of the user's that has its name is renamed as
    /// `uniqueName` says.
    void addPreset(CaptionStyle const& preset);
    /// Restores all built-in styles, in front of the user's, which stay but may be renamed as by
    /// `addPreset`.
    void resetToPresets();

    // Saving -----------------------------------------------------------------------------------

    /// Keeps the styles in this settings file from now on: those in it replace ours; if it is
    /// missing, ours are written. Pending changes are saved to the previous file first. Blocks
    /// while it reads.
    void attach(std::filesystem::path const& file);
    /// Keeps the styles in the user's defaults only from now on.
    void detach();

    /// Saves what is pending now, on a worker.
    void startSaving() { m_file.startSaving(); }
    /// Saves what is pending before it returns.
    void writeBeforeQuitting() { m_file.flush(); }

signals:
    void changed();

private:
    FileForm<StyleList> form() const;
    FileOwner<StyleList> owner();
    void load();
    void change(StyleList list);
    void setList(StyleList list);
    Taken take(StyleList const& theirs, StyleList const* base);
    void addNewPresets();

    Kind m_kind;
    UserDefaults m_defaults;
    StyleList m_list;
    std::vector<CaptionStyle> m_newPresets; ///< Built-in styles that are new in this version.
    std::string m_loadingProblem;           ///< Of the user's defaults.
    SyncedFile<StyleList> m_file;
};

/// The two stores of an editor.
struct StyleStores {
    explicit StyleStores(UserDefaults& defaults);

    StyleStore captions;
    StyleStore texts;

    /// Attaches both to the settings of a workspace; detaches them where there is none.
    void follow(std::optional<std::filesystem::path> const& workspace);
    /// Saves what is pending in both, as whenever a project is saved.
    void syncStyles();
    void writeBeforeQuitting();
};

} // namespace framewright
