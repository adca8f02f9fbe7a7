#pragma once

#include "composition/asset_store.h"
#include "media/media_info.h"
#include "model/project.h"
#include "model/refusal.h"
#include "raster/caption_burner.h"
#include "tasks/watched_work.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>

namespace framewright {

/// An export failed; no file was left behind. `what()` is the sentence shown to the user.
class ExportError : public std::runtime_error {
public:
    enum class Cause {
        emptyRange, ///< There is nothing between start and end.
        cancelled,  ///< A stop was requested.
        media,      ///< A source couldn't be read or the movie not be written.
        noSpace,    ///< Not enough free disk space.
        wrongFile,  ///< The movie written doesn't match what was requested.
        stalled,    ///< No progress for too long, for example on a dead network disk.
    };

    ExportError(Cause errorCause, std::string const& sentence)
        : std::runtime_error(sentence), cause(errorCause)
    {
    }

    Cause const cause;
};

struct ExportSettings {
    enum class Quality {
        full,    ///< At the footage's own size; HEVC in HLG when any of it is HDR, else H.264.
        preview, ///< Quick: 960 pixels on the long side, H.264 in standard range.
    };

    std::filesystem::path file = {};
    std::optional<double> start = {}; ///< Seconds; the beginning by default.
    std::optional<double> end = {}; ///< Seconds; the end of the picture by default and at the most.
    std::optional<int> height = {}; ///< Of the output in pixels; goes before the quality's size.
    Quality quality = Quality::full;
};

struct ExportResult {
    std::filesystem::path file;
    double duration = 0; ///< Seconds: of all its frames, and of the sound, which is as long.
    PixelSize size;
    int frames = 0;
    int framesPerSecond = 0;
};

/// Why no movie can be put at `file`, whatever it holds; nothing when one can, as far as is known
/// before it is tried.
std::optional<Refusal> targetProblem(std::filesystem::path const& file);

/// How far an export is, from 0 to 1 and never back, and what it is doing: "Rendering", then
/// "Rendering, 12 s left", then "Finishing".
using ExportProgress = std::function<void(double fraction, std::string_view stage)>;

/// The machine as the exporter sees it; tests substitute their own.
struct ExportSurroundings {
    /// Bytes that may be written in a folder.
    std::function<std::uintmax_t(std::filesystem::path const& folder)> freeSpace = freeBytes;
    std::function<MediaInfo(std::filesystem::path const& file)> probe = probeMedia;
    StallLimit stall = {};

    static std::uintmax_t freeBytes(std::filesystem::path const& folder);
};

/// Renders a project into a movie file. It holds a snapshot: what happens to the project
/// meanwhile doesn't change the movie.
class Exporter {
public:
    Exporter(Project project, AssetStore assets, std::shared_ptr<CaptionBurner const> burner,
             ExportSettings settings, ExportSurroundings surroundings = {});

    /// The size that the movie will have.
    PixelSize size() const;

    /// Renders the movie. Blocks until it is written: call it on a worker thread. Calls
    /// `progress` on that same thread, about once per percent, and stops soon after `stop` is
    /// requested.
    ///
    /// Frame n shows the timeline at start + n / rate. There are round(duration * rate) frames, and
    /// at least one. Memory doesn't grow with the length.
    /// Free disk space is checked first, and the finished movie before it is moved to its name. An
    /// export without progress for 30 seconds is given up; the stalled thread is abandoned.
    /// Throws ExportError; then no file is left, and an existing one is untouched.
    ExportResult run(ExportProgress const& progress = {}, std::stop_token stop = {}) const;

private:
    Project m_project;
    AssetStore m_assets;
    std::shared_ptr<CaptionBurner const> m_burner;
    ExportSettings m_settings;
    ExportSurroundings m_surroundings;
};

} // namespace framewright
