#include "sync/internal/sync_cycle.h"

namespace framewright {

namespace {

using Value = SyncCycle::Value;

std::optional<ContentMark> markOf(std::optional<std::string> const& bytes)
{
    return bytes ? std::optional(contentMark(*bytes)) : std::nullopt;
}

std::optional<std::string> contentOf(SyncCycle const& cycle)
{
    try {
        return readFile(*cycle.file, cycle.form->largestFile);
    } catch (FileError const& error) {
        if (error.cause == FileError::Cause::missing)
            return std::nullopt;
        throw;
    }
}

/// What `bytes` hold; nothing when they don't decode, with the reason.
std::optional<Decoded<std::any>> decoded(SyncCycle const& cycle, std::string const& bytes,
                                         std::string& reason)
{
    try {
        return cycle.form->decode(bytes);
    } catch (std::exception const& error) {
        reason = error.what();
        return std::nullopt;
    }
}

class FileSession {
public:
    FileSession(SyncCycle const& cycle, SyncResult& result) : m_cycle(cycle), m_result(result) {}

    void run()
    {
        try {
            sync();
        } catch (std::exception const& error) {
            report(FileTrouble::Cause::failed, error.what());
        }
    }

private:
    void sync()
    {
        std::optional<std::string> const onDisk = contentOf(m_cycle);
        std::optional<std::string> ours;
        if (m_cycle.value == Value::save)
            ours = m_cycle.form->encode(m_cycle.ours, *m_cycle.file);
        auto const mark = markOf(onDisk);
        auto const ourMark = markOf(ours);
        switch (syncStep(m_cycle.known, mark, ourMark)) {
        case SyncStep::rest:
            m_result.onDisk = mark;
            m_result.isMissing = !onDisk;
            break;
        case SyncStep::create:
            if (m_cycle.form->makesFolder) {
                std::error_code failed; // If it fails, so does the write, which reports it.
                std::filesystem::create_directory(m_cycle.file->parent_path(), failed);
            }
            writeFileAtomically(*m_cycle.file, *ours);
            saved(ourMark);
            break;
        case SyncStep::exchange:
            exchange(*ours, *onDisk, *ourMark);
            break;
        case SyncStep::settle:
            saved(ourMark);
            break;
        case SyncStep::handOver:
            handOver(*onDisk);
            break;
        }
    }

    void saved(std::optional<ContentMark> const& mark)
    {
        m_result.onDisk = mark;
        m_result.isSaved = true;
    }

    void exchange(std::string const& ours, std::string const& onDisk, ContentMark const& mark)
    {
        FileReplacement const replacement = m_cycle.replace(*m_cycle.file, ours, onDisk);
        if (replacement.isDone)
            return saved(mark);
        // A file written in place passes through contents that don't decode; they are skipped. The
        // next cycle reads what is there by then.
        std::string ignored;
        for (std::string const& bytes : replacement.found) {
            if (auto theirs = decoded(m_cycle, bytes, ignored))
                m_result.theirs.push_back({std::move(*theirs), contentMark(bytes), false});
        }
    }

    void handOver(std::string const& bytes)
    {
        std::string reason;
        if (auto theirs = decoded(m_cycle, bytes, reason))
            m_result.theirs.push_back({std::move(*theirs), contentMark(bytes)});
        else
            report(FileTrouble::Cause::invalid, reason);
    }

    void report(FileTrouble::Cause cause, std::string const& reason)
    {
        auto const during = m_cycle.value == Value::save ? FileTrouble::During::saving
                                                         : FileTrouble::During::reading;
        m_result.trouble = FileTrouble{*m_cycle.file, during, cause, reason};
    }

    SyncCycle const& m_cycle;
    SyncResult& m_result;
};

void keepElsewhere(SyncCycle const& cycle, SyncResult& result)
{
    // A save that found another program's version is repeated once the owner has taken that in.
    bool const isFinal = cycle.value == Value::keep || result.isSaved || result.trouble;
    if (cycle.value == Value::look || !isFinal || !cycle.form->alsoKeep)
        return;
    try {
        cycle.form->alsoKeep(cycle.ours, result.isSaved ? InFile::yes : InFile::no);
        result.isKept = true;
    } catch (std::exception const& error) {
        result.keepingProblem = error.what();
    }
}

} // namespace

SyncStep syncStep(std::optional<ContentMark> const& known, std::optional<ContentMark> const& onDisk,
                  std::optional<ContentMark> const& ours)
{
    if (!onDisk)
        return ours ? SyncStep::create : SyncStep::rest;
    if (onDisk == ours)
        return SyncStep::settle;
    if (onDisk != known)
        return SyncStep::handOver;
    return ours ? SyncStep::exchange : SyncStep::rest;
}

SyncResult run(SyncCycle const& cycle)
{
    SyncResult result;
    if (cycle.file && cycle.value != Value::keep)
        FileSession(cycle, result).run();
    keepElsewhere(cycle, result);
    return result;
}

} // namespace framewright
