#include "sync/file_sync.h"

#include "sync/internal/sync_cycle.h"
#include "tasks/next_emission.h"
#include "tasks/on_worker.h"

#include <QPointer>

#include <algorithm>

namespace framewright {

namespace {

using namespace std::chrono_literals;

/// How often one save is attempted while another program keeps writing the file.
constexpr int mostTries = 10;

std::chrono::milliseconds since(std::chrono::steady_clock::time_point then)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 then);
}

} // namespace

std::chrono::milliseconds saveDelay(SyncTiming const& timing, std::chrono::milliseconds waited)
{
    return std::clamp(timing.longestDelay - waited, 0ms, timing.delay);
}

FileSync::FileSync(FileForm<std::any> form, FileOwner<std::any> owner, SyncTiming const& timing,
                   QObject* parent)
    : QObject(parent),
      m_form(std::make_shared<FileForm<std::any> const>(std::move(form))),
      m_owner(std::move(owner)),
      m_timing(timing),
      m_revisionInFile(0)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this] { wish(Wish::save); });
}

FileSync::~FileSync() = default;

// Where ----------------------------------------------------------------------------------------

void FileSync::leaveFile()
{
    // Nothing is written any more once this returns: neither a second time into one file, nor a
    // copy that the owner is about to remove.
    if (m_job)
        m_job->run();
    m_job.reset();
    m_timer.stop();
    m_wish = Wish::nothing;
    m_tries = 0;
    ++m_bindings;
    m_watcher.reset();
    m_file.reset();
    m_known.reset();
    m_base.reset();
    m_notes.clear();
    m_unknownKeys.clear();
    m_revisionInFile = m_revision;
    m_revisionKept = m_revision;
}

void FileSync::watch()
{
    m_watcher.reset();
    if (m_saving == Saving::automatic)
        watchFile();
}

void FileSync::watchFile()
{
    if (m_watcher)
        return;
    m_watcher = std::make_unique<FileWatcher>(*m_file);
    connect(m_watcher.get(), &FileWatcher::changed, this, &FileSync::startReading);
    connect(m_watcher.get(), &FileWatcher::vanished, this, &FileSync::vanished);
}

bool FileSync::open(std::filesystem::path const& file, Saving saving)
{
    leaveFile();
    m_file = file;
    m_saving = saving;
    // Treats the value as the file's last known content, so that what is read replaces it.
    m_base = m_owner.value();
    watch();
    reportChanges({});
    bool const isRead = readBlocking();
    if (m_lastEnd == Ended::missing) {
        m_base.reset();
        m_revisionInFile.reset();
        startSaving();
    }
    return isRead;
}

void FileSync::bind(std::filesystem::path const& file, Decoded<std::any> read, ContentMark mark,
                    Saving saving)
{
    leaveFile();
    m_file = file;
    m_saving = saving;
    m_base = std::move(read.value);
    m_notes = std::move(read.notes);
    m_unknownKeys = std::move(read.unknownKeys);
    m_known = std::move(mark);
    watch();
    reportChanges({});
}

void FileSync::followTo(std::filesystem::path const& file)
{
    // Taken now: the result of a save under way does not say under which name the file was.
    finishJob();
    m_file = file;
    ++m_bindings;
    watch();
    if (isWorkLeft())
        schedule();
}

void FileSync::detach()
{
    leaveFile();
    reportChanges({});
}

void FileSync::setSaving(Saving saving)
{
    if (saving == m_saving)
        return;
    m_saving = saving;
    watch();
    if (isWorkLeft())
        schedule();
}

// When -----------------------------------------------------------------------------------------

void FileSync::valueChanged()
{
    ++m_revision;
    schedule();
    reportChanges(m_problem);
}

void FileSync::schedule()
{
    if (!m_timer.isActive())
        m_waitingSince = std::chrono::steady_clock::now();
    m_timer.start(saveDelay(m_timing, since(m_waitingSince)));
}

void FileSync::startSaving()
{
    wish(Wish::saveAnyway);
}

void FileSync::startReading()
{
    wish(Wish::look);
}

void FileSync::wish(Wish wish)
{
    m_wish = std::max(m_wish, wish);
    startNext();
}

QCoro::Task<void> FileSync::settled()
{
    QPointer<FileSync> const self(this);
    while (self && m_job)
        co_await NextEmission(this, &FileSync::cycleEnded);
}

QCoro::Task<bool> FileSync::saveNow()
{
    QPointer<FileSync> const self(this);
    startSaving();
    co_await settled();
    co_return self && !isDirty();
}

bool FileSync::readBlocking()
{
    if (!m_file)
        return false;
    m_lastEnd = Ended::missing;
    runBlocking(Wish::look);
    return m_lastEnd == Ended::well;
}

bool FileSync::flush()
{
    runBlocking(Wish::save);
    m_timer.stop();
    return !isDirty();
}

// One cycle after another ----------------------------------------------------------------------

/// Whether a change still has to be saved, or kept elsewhere.
bool FileSync::isWorkLeft() const
{
    if (!isDirty() && m_file)
        return false;
    if (m_file && m_saving == Saving::automatic)
        return true;
    return m_form->alsoKeep && m_revisionKept != m_revision;
}

/// The job for the current wish; null when there is nothing to do.
std::shared_ptr<SyncJob> FileSync::nextJob()
{
    Wish const wish = std::exchange(m_wish, Wish::nothing);
    if (wish >= Wish::save)
        m_timer.stop();
    SyncCycle cycle{.form = m_form, .file = m_file, .known = m_known};
    bool const isWanted =
        wish == Wish::saveAnyway || (wish == Wish::save && m_saving == Saving::automatic);
    if (m_file && isDirty() && isWanted)
        cycle.value = SyncCycle::Value::save;
    else if (wish >= Wish::save && isWorkLeft())
        cycle.value = SyncCycle::Value::keep;
    else if (wish != Wish::look || !m_file)
        return nullptr;
    if (cycle.value != SyncCycle::Value::look)
        cycle.ours = m_owner.value();
    return std::make_shared<SyncJob>(std::move(cycle), m_revision);
}

void FileSync::startNext()
{
    if (m_job)
        return;
    m_job = nextJob();
    if (m_job)
        runOnWorker(m_job);
}

QCoro::Task<void> FileSync::runOnWorker(std::shared_ptr<SyncJob> job)
{
    QPointer<FileSync> const self(this);
    auto const work = [job] { job->run(); };
    co_await onWorker(work);
    if (!self || m_job != job)
        co_return; // Destroyed, unbound, or `finishJob` has taken the result.
    finishJob();
    if (!self)
        co_return;
    startNext();
    emit cycleEnded();
}

/// Takes the result of the current job, if any. Runs it here when no worker has begun it.
void FileSync::finishJob()
{
    if (!m_job)
        return;
    m_job->run();
    auto const job = std::exchange(m_job, nullptr);
    m_lastEnd = takeResult(*job);
}

void FileSync::runBlocking(Wish wish)
{
    QPointer<FileSync> const self(this);
    finishJob();
    if (!self)
        return;
    m_wish = std::max(m_wish, wish);
    do {
        m_job = nextJob();
        finishJob();
    } while (self && m_lastEnd == Ended::toBeRepeated && m_wish != Wish::nothing);
    if (self)
        emit cycleEnded();
}

// Results --------------------------------------------------------------------------------------

FileSync::Ended FileSync::takeResult(SyncJob& job)
{
    SyncResult& result = job.result();
    bool const wasSave = job.cycle().value == SyncCycle::Value::save;
    if (result.isKept)
        m_revisionKept = job.revision;
    if (result.isSaved)
        takeSaved(job);
    else if (result.onDisk)
        m_known = result.onDisk;

    // A save that neither succeeded nor failed found another program's version.
    bool isSettled = result.isSaved || result.trouble;
    if (!result.theirs.empty()) {
        QPointer<FileSync> const self(this);
        auto const bindings = m_bindings;
        isSettled = takeTheirs(result.theirs) || result.trouble;
        if (!self || bindings != m_bindings)
            return Ended::well;
    }
    bool isRepeated = wasSave && !isSettled;
    m_tries = isRepeated ? m_tries + 1 : 0;
    if (m_tries == mostTries) {
        isRepeated = false;
        m_tries = 0;
        result.trouble =
            FileTrouble{*m_file, FileTrouble::During::saving, FileTrouble::Cause::failed,
                        "another program keeps writing it."};
    }
    if (isRepeated)
        m_wish = Wish::saveAnyway;
    Ended const ended = result.trouble     ? Ended::inTrouble
                        : result.isMissing ? Ended::missing
                        : isRepeated       ? Ended::toBeRepeated
                                           : Ended::well;
    reportResult(job);
    return ended;
}

/// The value that was saved may be older than the one in memory.
void FileSync::takeSaved(SyncJob& job)
{
    m_known = job.result().onDisk;
    m_base = job.cycle().ours;
    m_revisionInFile = job.revision;
    // After a repeated save the notes are those of the version just merged in: not yet reported.
    if (m_tries == 0)
        m_notes.clear();
    m_unknownKeys.clear();
}

/// Whether memory and file agree again.
bool FileSync::takeTheirs(std::vector<TheirVersion> const& all)
{
    QPointer<FileSync> const self(this);
    auto const bindings = m_bindings;
    Taken taken = Taken::merged;
    for (TheirVersion const& theirs : all) {
        m_notes = theirs.read.notes;
        m_unknownKeys = theirs.read.unknownKeys;
        std::any const base = std::exchange(m_base, theirs.read.value);
        if (theirs.isOnDisk)
            m_known = theirs.mark;
        taken = m_owner.take(theirs.read, base.has_value() ? &base : nullptr);
        if (!self || bindings != m_bindings)
            return true;
    }
    if (taken == Taken::asItIs && all.back().isOnDisk) {
        m_revisionInFile = m_revision;
        m_timer.stop();
        m_wish = Wish::nothing;
        return true;
    }
    if (!isDirty())
        ++m_revision;
    return false;
}

void FileSync::reportResult(SyncJob& job)
{
    SyncResult const& result = job.result();
    std::string problem;
    if (result.trouble)
        problem = m_owner.describe(*result.trouble);
    if (!result.keepingProblem.empty())
        problem += (problem.empty() ? "" : " ") + result.keepingProblem;
    if (result.isMissing)
        problem = m_problem; // A missing file does not show that the problem is solved.

    if (problem.empty()) {
        if (isWorkLeft() && m_wish == Wish::nothing && !m_timer.isActive())
            schedule();
    } else if (job.cycle().value != SyncCycle::Value::look && m_timing.retryDelay) {
        m_waitingSince = std::chrono::steady_clock::now();
        m_timer.start(*m_timing.retryDelay);
    }
    QPointer<FileSync> const self(this);
    reportChanges(std::move(problem));
    if (self && result.isSaved)
        emit saved();
}

void FileSync::reportChanges(std::string problem)
{
    QPointer<FileSync> const self(this);
    bool const isOther = problem != m_problem;
    m_problem = std::move(problem);
    if (m_file && m_wasDirty != isDirty()) {
        m_wasDirty = isDirty();
        emit dirtyChanged(m_wasDirty);
    }
    if (self && isOther)
        emit problemChanged();
}

} // namespace framewright
