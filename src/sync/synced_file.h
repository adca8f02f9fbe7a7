#pragma once

#include "sync/file_sync.h"

#include <utility>

namespace framewright {

template <class T>
FileForm<std::any> untyped(FileForm<T> form)
{
    FileForm<std::any> any;
    any.encode = [encode = std::move(form.encode)](std::any const& value,
                                                   std::filesystem::path const& file) {
        return encode(std::any_cast<T const&>(value), file);
    };
    any.decode = [decode = std::move(form.decode)](std::string_view bytes) {
        Decoded<T> read = decode(bytes);
        return Decoded<std::any>{std::move(read.value), std::move(read.notes),
                                 std::move(read.unknownKeys)};
    };
    if (form.alsoKeep) {
        any.alsoKeep = [keep = std::move(form.alsoKeep)](std::any const& value, InFile inFile) {
            keep(std::any_cast<T const&>(value), inFile);
        };
    }
    any.largestFile = form.largestFile;
    any.makesFolder = form.makesFolder;
    return any;
}

template <class T>
FileOwner<std::any> untyped(FileOwner<T> owner)
{
    FileOwner<std::any> any;
    any.value = [value = std::move(owner.value)] { return std::any(value()); };
    any.take = [take = std::move(owner.take)](Decoded<std::any> const& theirs,
                                              std::any const* base) {
        Decoded<T> const read{std::any_cast<T const&>(theirs.value), theirs.notes,
                              theirs.unknownKeys};
        return take(read, base ? std::any_cast<T>(base) : nullptr);
    };
    any.describe = std::move(owner.describe);
    return any;
}

/// Keeps one file in step with a value in memory: saves the value after changes, and takes in what
/// other programs write. Nobody's work is lost on either side.
///
/// **The problem.** People and agents edit our files while the editor has them open, with editors
/// that write in place, rename, or write twice. A save that just replaces the file destroys such an
/// edit; reading the file whenever it changes destroys what is in memory; asking the user stops an
/// agent. And neither reading nor saving may block the main thread, which edits meanwhile.
///
/// **The method.** Everything is one kind of cycle, run on a worker: read the file, compare, then
/// write or hand over.
///
///     file is            nothing to save   something to save
///     missing            rest              written
///     as we know it      rest              exchanged with ours
///     ours already       -                 counts as saved
///     anything else      theirs is handed to the owner, who reconciles the two; then again
///
/// "As we know it" compares a hash of the content with that of what we last read or wrote: times
/// and sizes miss the second of two close writes, and a watcher reports our own writes as well. The
/// exchange itself (replaceFileAtomically) swaps the names of two files and checks what was there,
/// so even a version written in that moment is found and handed over.
///
/// The owner decides what to do with theirs, on the main thread. Lists of independent entries are
/// merged three ways, which is why the last common version is kept and passed on. A project, where
/// a merge could make an edit nobody wanted, takes theirs as an undoable step. Merging used to
/// happen on the worker, with the snapshot, and again on the main thread with what had changed
/// since; now it is done once, with the current value, and the result is saved at once.
///
/// Cycles never overlap. Reads during a save used to see the old file or an outdated edit of ours,
/// and had to be repeated; one slot for a job and a wish for the next one is simpler than detecting
/// that.
///
/// **What was saved.** The value has a revision, counted up by each change; a job carries the
/// revision of its snapshot. The file is in step when the two are equal, so an edit made during a
/// save leaves the value dirty and leads to another save.
///
/// **A file that does not decode** may be half written or mistyped. It is never overwritten: the
/// problem is reported, and the value is saved once the file is valid again.
///
/// **Blocking.** `flush` and `readBlocking` don't queue for a worker, which may be busy with an
/// export: a job that no worker has begun is run by the thread that needs its result.
///
/// **Lifetime.** A job owns all it uses. When the synced file is destroyed, a write under way is
/// completed and its result dropped. The destructor saves nothing, since it can't ask a
/// half-destroyed owner for the value: the owner calls `flush` first. Nothing that outlives it may
/// await `saveNow` or `settled`.
template <class T>
class SyncedFile : public FileSync {
public:
    SyncedFile(FileForm<T> form, FileOwner<T> owner, SyncTiming const& timing,
               QObject* parent = nullptr)
        : FileSync(untyped(std::move(form)), untyped(std::move(owner)), timing, parent)
    {
    }

    /// Binds to a file that was read already, as `read` with this mark; the value is what it holds.
    void bind(std::filesystem::path const& file, Decoded<T> read, ContentMark mark, Saving saving)
    {
        FileSync::bind(file,
                       {std::move(read.value), std::move(read.notes), std::move(read.unknownKeys)},
                       std::move(mark), saving);
    }
};

} // namespace framewright
