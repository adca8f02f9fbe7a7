#pragma once

#include "model/project.h"
#include "render/asset_store.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>

namespace framewright {

/// An export didn't come about. `what()` is the whole sentence the user reads. No file was left.
class ExportError : public std::runtime_error {
public:
    enum class Cause {
        emptyRange, ///< There is nothing between start and end.
        cancelled,  ///< Somebody asked it to stop.
        media,      ///< A source could not be read or the file not be written.
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

/// How far an export is, from 0 to 1, and what it is doing: "Rendering", then "Finishing".
using ExportProgress = std::function<void(double fraction, std::string_view stage)>;

/// Renders a project into a movie file. It holds a snapshot: what happens to the project
/// meanwhile doesn't change the movie.
class Exporter {
public:
    Exporter(Project project, AssetStore assets, ExportSettings settings);

    /// The size that the movie will have.
    PixelSize size() const;

    /// Renders the movie. Blocks until it is written: call it on a worker thread. Calls
    /// `progress` on that same thread, about once per percent, and stops soon after `stop` is
    /// requested.
    ///
    /// Frame n shows the piece at start + n / rate. There are round(duration * rate) frames, and
    /// at least one. Memory doesn't grow with the length.
    /// Throws ExportError; no file is left then, and one that stood there before stays.
    ExportResult run(ExportProgress const& progress = {}, std::stop_token stop = {}) const;

private:
    Project m_project;
    AssetStore m_assets;
    ExportSettings m_settings;
};

} // namespace framewright
