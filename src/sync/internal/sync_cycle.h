#pragma once

#include "platform/atomic_file.h"
#include "sync/content_mark.h"
#include "sync/file_form.h"

#include <any>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace framewright {

/// What a cycle does with the file.
enum class SyncStep {
    rest,     ///< Nothing to read or write.
    create,   ///< The file is missing: ours is written.
    exchange, ///< The file is as we know it: ours takes its place.
    settle,   ///< The file holds our bytes already.
    handOver, ///< Another program wrote it: theirs goes to the owner.
};

/// `known` is the content we last read or wrote, `onDisk` the current one, `ours` the one to write.
/// Each may be missing.
SyncStep syncStep(std::optional<ContentMark> const& known, std::optional<ContentMark> const& onDisk,
                  std::optional<ContentMark> const& ours);

/// One version of the file that another program wrote.
struct TheirVersion {
    Decoded<std::any> read;
    ContentMark mark;
    bool isOnDisk = true; ///< False for one that was found in the middle of an exchange.
};

/// What a cycle needs, as values.
struct SyncCycle {
    enum class Value { look, keep, save };

    std::shared_ptr<FileForm<std::any> const> form;
    Value value = Value::look; ///< Whether ours is only kept elsewhere, or saved to the file.
    std::any ours = {};
    std::optional<std::filesystem::path> file;
    std::optional<ContentMark> known;
    std::function<FileReplacement(std::filesystem::path const&, std::string_view bytes,
                                  std::string_view expected)>
        replace = replaceFileAtomically;
};

struct SyncResult {
    /// Of the content we know to be in the file: unchanged or just written.
    std::optional<ContentMark> onDisk;
    bool isSaved = false; ///< The file holds our value.
    bool isKept = false;  ///< `alsoKeep` succeeded.
    bool isMissing = false;
    std::vector<TheirVersion> theirs; ///< Oldest first.
    std::optional<FileTrouble> trouble;
    std::string keepingProblem;
};

/// Reads, compares, and writes unless another program's version is there. Blocks until the write
/// has reached the disk. Any thread. Never throws.
SyncResult run(SyncCycle const& cycle);

/// A cycle that a worker runs, or a thread that can't wait for a worker: `run` returns when it is
/// done, whichever thread did it.
class SyncJob {
public:
    SyncJob(SyncCycle cycle, std::uint64_t valueRevision)
        : revision(valueRevision), m_cycle(std::move(cycle))
    {
    }

    void run()
    {
        std::call_once(m_once, [this] { m_result = framewright::run(m_cycle); });
    }

    SyncCycle const& cycle() const { return m_cycle; }
    SyncResult& result() { return m_result; } ///< After `run`.

    std::uint64_t const revision; ///< Of the value it saves.

private:
    SyncCycle m_cycle;
    std::once_flag m_once;
    SyncResult m_result;
};

} // namespace framewright
