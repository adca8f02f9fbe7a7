#pragma once

#include "composition/composition_builder.h"
#include "export/exporter.h"
#include "media/media_info.h"
#include "model/aspect_preset.h"
#include "pipeline/file_identity.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

/// What was requested.
struct ExpectedMovie {
    PixelSize size;
    int framesPerSecond = 30;
    double duration = 0; ///< Seconds.
    bool isHDR = false;
    ExportSettings::Quality quality = ExportSettings::Quality::full;
};

/// About how large the file will be: what footage of people and places usually takes. A noisy
/// picture may take more, titles on black far less.
std::uintmax_t estimatedBytes(ExpectedMovie const& movie);

/// Why a file of `needed` bytes should not be begun in `folder`: a sentence. Nothing when there is
/// room.
std::optional<std::string> spaceProblem(std::filesystem::path const& folder, std::uintmax_t needed,
                                        std::uintmax_t free);

/// The files that are seen or heard in a stretch of a composition, as they stand now.
std::vector<FileIdentity> sourcesOf(BuiltComposition const& composition, TimeRange span);

/// A sentence naming a source that was changed meanwhile. A deleted one is no problem: what is open
/// can still be read.
std::optional<std::string> sourceProblem(std::vector<FileIdentity> const& sources);

/// Whether the movie just written matches what was requested; if not, a sentence saying how.
std::optional<std::string> movieProblem(MediaInfo const& found, ExpectedMovie const& expected);

} // namespace framewright
