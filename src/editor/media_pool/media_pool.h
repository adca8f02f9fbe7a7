#pragma once

#include "composition/asset_store.h"
#include "editor/document/document.h"
#include "editor/media_pool/asset_refs.h"
#include "editor/media_pool/probed_file.h"
#include "model/shared.h"

#include <QCoro/QCoroTask>
#include <QObject>

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

struct OpenedAsset;

/// Where the media files of a project may be found.
struct MediaPlaces {
    std::filesystem::path projectFolder;
    AssetRefs refs;
};

/// The files behind the assets of the open project: opened with it, probed again when they change,
/// found again when they moved.
///
/// What a file is and where it is are facts, not edits: they are corrected in every step of the
/// history. Files are probed on workers; results that arrive after the asset got another file, or
/// after another project was opened, are dropped. Main thread only. May be destroyed meanwhile.
class MediaPool : public QObject {
    Q_OBJECT

public:
    explicit MediaPool(Document& document, QObject* parent = nullptr);
    ~MediaPool() override;

    /// The files opened so far. A value: a worker takes a copy along.
    AssetStore const& store() const { return m_store; }

    /// Why an asset's file could not be opened, as one sentence; nothing when it could.
    std::optional<std::string> problem(Id const& asset) const;

    /// Every such sentence, by asset.
    std::map<Id, std::string> const& problems() const { return m_problems; }

    /// Where files are looked for from now on.
    void setPlaces(MediaPlaces places) { m_places = std::move(places); }
    MediaPlaces const& places() const { return m_places; }

    /// Opens every file of the project, finding those that moved. Drops earlier results.
    QCoro::Task<void> load();

    /// Ends when `load` has ended, at once when none is running.
    QCoro::Task<void> loaded();

    /// What to do about files that were missing or could not be opened last time.
    enum class Missing {
        inPlace,  ///< They are checked where they should be.
        searched, ///< They are searched for in all places, and opened again. Takes longer.
    };

    /// Ends when `store` and `problem` reflect the current files: those that appeared, vanished or
    /// were replaced have been opened again. Checks each file's size and time.
    QCoro::Task<void> refresh(Missing missing = Missing::inPlace);

    /// Probes a file. A file that the project has already keeps its asset, however its path is
    /// written. Nothing is added to the project. Throws MediaError.
    QCoro::Task<ProbedFile> probe(std::filesystem::path file);

    /// The same for an asset of the project, as last opened. Nothing when it was not.
    std::optional<ProbedFile> known(Id const& asset) const;

    /// Keeps what a probe found, for an edit that adds the file to the project.
    void remember(ProbedFile const& file);

    /// Makes the assets refer to these files from now on, in every step of the history.
    void relocate(std::map<Id, std::filesystem::path> const& found);

signals:
    /// `load` has ended.
    void loadEnded();
    /// The store has changed.
    void changed();

private:
    using SeenFiles = Shared<std::map<Id, FileIdentity>>;

    void follow(ProjectChange const& change);
    void forget();
    void take(std::vector<OpenedAsset> const& opened);

    Document& m_document;
    MediaPlaces m_places;
    AssetStore m_store;
    std::map<Id, std::string> m_problems;
    SeenFiles m_seen;
    std::uint64_t m_round = 0; ///< Counts loads, so that an outdated one is recognised.
    bool m_isLoading = false;
};

} // namespace framewright
