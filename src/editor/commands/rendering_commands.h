#pragma once

#include "editor/app_state.h"
#include "editor/export_session.h"
#include "model/outcome.h"
#include "stills/contact_sheet.h"
#include "stills/still_frames.h"

#include <QCoro/QCoroTask>

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace framewright {

// Commands that show the project as it is when they begin: its files are probed again first, and
// editing continues meanwhile. Throw MediaError for files that can't be read.

/// What is rendered: the project and its files, with the reasons why some are missing.
struct RenderedProject {
    Project project;
    std::map<Id, std::string> mediaProblems; ///< By asset.
};

/// A requested time, and the time drawn: past the end, that of the last frame.
struct DrawnTime {
    double asked = 0;
    double drawn = 0;

    bool isPastEnd() const { return asked != drawn; }
};

struct DrawnFrames {
    RenderedProject of;
    std::vector<DrawnTime> times;
    PixelSize size;
    std::vector<std::uint8_t> png;
};

/// One frame. Refused for a time before 0 and a width outside 16 to 1080.
QCoro::Task<Outcome<DrawnFrames>> drawFrame(AppState& state, StillFrames& stills, double time,
                                            std::optional<int> width);

/// Which frames a contact sheet shows, and how.
struct SheetWanted {
    SheetMoments moments;
    std::optional<int> columns = {};    ///< Else 4.
    std::optional<int> frameWidth = {}; ///< Else 240.
};

/// Refused as `drawFrame`, and for more frames or pixels than a sheet may have.
QCoro::Task<Outcome<DrawnFrames>> drawSheet(AppState& state, StillFrames& stills,
                                            SheetWanted wanted);

/// A movie to export; what is not given is chosen.
struct MovieWanted {
    /// Gets the ending .mp4; a folder gets a file named after the project and the time. Else the
    /// exports folder of the project.
    std::optional<std::filesystem::path> file = {};
    ExportSettings::Quality quality = ExportSettings::Quality::full;
    std::optional<int> height = {};   ///< 480 to 4320.
    std::optional<double> start = {}; ///< Seconds.
    std::optional<double> end = {};
};

struct ExportedMovie {
    RenderedProject of;
    ExportResult movie;
};

/// Refused as `ExportSession::run`, for an empty range, and for a height out of range. Missing
/// files are searched for first. `progress` is called on a worker. Throws ExportError.
QCoro::Task<Outcome<ExportedMovie>> exportMovie(AppState& state, ExportSession& exports,
                                                MovieWanted wanted, ExportProgress progress,
                                                std::stop_token stop);

} // namespace framewright
