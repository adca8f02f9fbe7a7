#pragma once

#include "editor/commands/editing.h"

#include <QCoro/QCoroTask>

#include <filesystem>
#include <variant>
#include <vector>

namespace framewright {

/// An asset of the project by its id, or a file that may become one.
using MediaSource = std::variant<Id, std::filesystem::path>;

/// The file's current state, probed again when it changed. Refused when the asset is gone. Throws
/// MediaError when the file can't be used.
QCoro::Task<Outcome<ProbedFile>> probeSource(Editing editing, MediaSource source);

/// "Import Media": adds files to the project without placing them, all or none of them. Gives the
/// assets in the files' order; a file that is there already keeps its asset. Throws MediaError.
QCoro::Task<Outcome<std::vector<MediaAsset>>> importMedia(Editing editing,
                                                          std::vector<std::filesystem::path> files);

/// "Consolidate Media": copies the files that are neither in the project's folder nor in one of
/// `folders` into the project, which plays the copies from now on. Gives the copies. Refused for a
/// project outside any workspace; throws ProjectFileError, and then nothing has changed.
QCoro::Task<Outcome<std::vector<std::filesystem::path>>>
consolidateMedia(Editing editing, std::vector<std::filesystem::path> folders);

} // namespace framewright
