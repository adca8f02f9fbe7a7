#include "workspace/project_folders.h"

#include "model/file_url.h"
#include "platform/file_error.h"
#include "platform/paths.h"
#include "workspace/workspace.h"
#include "workspace/workspace_messages.h"

#include <QFile>
#include <QStandardPaths>
#include <QString>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <tuple>

#include <unistd.h>

namespace framewright {

namespace {

using Path = std::filesystem::path;

constexpr std::size_t longestName = 200;

[[noreturn]] void fail(Path const& place, std::string const& doing, std::error_code const& error)
{
    throw WorkspaceError(validUtf8(FileError::fromWriting(place, doing, error.value()).what()));
}

bool isHidden(Path const& entry)
{
    return entry.filename().string().starts_with('.');
}

QString lowerCased(std::string const& name)
{
    return QString::fromStdString(name).toLower();
}

/// A project's folder without a slash at its end, so that its name is its last part.
Path namedFolder(Path const& folder)
{
    return folder.has_filename() ? folder : folder.parent_path();
}

bool isThere(Path const& folder)
{
    std::error_code error;
    return std::filesystem::is_directory(folder, error);
}

Refusal goneRefusal(Path const& folder)
{
    return {Reason::folderGone, Subject::named(folder.string())};
}

ProjectListing listing(Path const& folder)
{
    ProjectListing project{.name = validUtf8(folder.filename().string()), .folder = folder};
    std::error_code error;
    Path const document = Workspace::projectFile(folder);
    project.hasDocument = std::filesystem::is_regular_file(document, error);
    project.hasThumbnail =
        std::filesystem::is_regular_file(Workspace::thumbnailFile(folder), error);
    project.modified =
        std::filesystem::last_write_time(project.hasDocument ? document : folder, error);
    return project;
}

/// A copy of a folder: hidden until it is complete, removed if that fails.
class StagedCopy {
public:
    explicit StagedCopy(Path const& target)
    {
        removeLeftovers(target.parent_path());
        static std::atomic<int> count = 0;
        m_folder = target.parent_path() / (std::string(nameStart) + std::to_string(::getpid()) +
                                           "-" + std::to_string(++count));
        std::error_code error;
        if (!std::filesystem::create_directory(m_folder, error))
            fail(target, "created", error);
    }
    ~StagedCopy()
    {
        std::error_code error;
        std::filesystem::remove_all(m_folder, error);
    }
    StagedCopy(StagedCopy const&) = delete;
    StagedCopy& operator=(StagedCopy const&) = delete;

    void take(Path const& entry)
    {
        using std::filesystem::copy_options;
        std::error_code error;
        std::filesystem::copy(entry, m_folder / entry.filename(),
                              copy_options::recursive | copy_options::copy_symlinks, error);
        if (error)
            fail(entry, "copied", error);
    }

    void appearAs(Path const& target)
    {
        std::error_code error;
        std::filesystem::rename(m_folder, target, error);
        if (error)
            fail(target, "created", error);
    }

private:
    static constexpr std::string_view nameStart = ".framewright-copy-";

    /// Removes the copies of killed processes: with media they are large.
    static void removeLeftovers(Path const& projects)
    {
        std::error_code error;
        for (std::filesystem::directory_iterator entry(projects, error), end;
             !error && entry != end; entry.increment(error)) {
            std::string const name = entry->path().filename().string();
            if (!name.starts_with(nameStart))
                continue;
            int const maker = std::atoi(name.c_str() + nameStart.size());
            std::error_code stays;
            if (maker > 0 && ::kill(maker, 0) != 0 && errno == ESRCH)
                std::filesystem::remove_all(entry->path(), stays);
        }
    }

    Path m_folder;
};

/// Makes sure that this user has a trash. Without one Qt would create one in the current
/// folder.
void requireTrash()
{
    QString const data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    Path const trash = Path(QFile::encodeName(data).toStdString()) / "Trash";
    if (!trash.is_absolute())
        throw FileError(FileError::Cause::missing, trash, "used",
                        "XDG_DATA_HOME is a relative path");
    for (char const* const part : {"files", "info"})
        ensureFolder(trash / part);
}

Path freeFolder(Path const& projects, std::string const& name)
{
    return projects / Workspace::uniqueName(name, projects);
}

} // namespace

std::vector<ProjectListing> listProjects(Path const& workspace)
{
    std::vector<ProjectListing> projects;
    Path const folder = Workspace::projectsFolder(workspace);
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code unreadable;
        if (!isHidden(entry->path()) && entry->is_directory(unreadable))
            projects.push_back(listing(entry->path()));
    }
    if (error && error != std::errc::no_such_file_or_directory)
        fail(folder, "listed", error);
    std::ranges::sort(projects, [](ProjectListing const& a, ProjectListing const& b) {
        return std::tie(b.modified, a.name) < std::tie(a.modified, b.name);
    });
    return projects;
}

Outcome<std::string> validProjectName(std::string_view name)
{
    if (!isValidUtf8(name))
        return Refusal{Reason::nameNotText, Subject::named(validUtf8(name))};
    QString const text = QString::fromUtf8(name.data(), qsizetype(name.size())).trimmed();
    std::string const usable = text.toStdString();
    if (usable.empty())
        return Refusal{Reason::nameEmpty};
    auto const isControl = [](QChar c) {
        return c.category() == QChar::Other_Control || c.category() == QChar::Separator_Line ||
               c.category() == QChar::Separator_Paragraph;
    };
    if (std::any_of(text.begin(), text.end(), isControl)) {
        QString shown = text;
        std::replace_if(shown.begin(), shown.end(), isControl, QChar(QChar::ReplacementCharacter));
        return Refusal{Reason::nameHasControlCharacter, Subject::named(shown.toStdString())};
    }
    if (usable.find('/') != std::string::npos)
        return Refusal{Reason::nameHasSlash, Subject::named(usable)};
    if (usable.starts_with('.'))
        return Refusal{Reason::nameBeginsWithDot, Subject::named(usable)};
    if (usable.size() > longestName)
        return Refusal{.reason = Reason::nameTooLong,
                       .subject = Subject::named(text.left(40).toStdString() + "…"),
                       .value = double(longestName)};
    return usable;
}

Outcome<Path> createProjectFolder(Path const& workspace, std::string_view name)
{
    auto const usable = validProjectName(name);
    if (!usable)
        return usable.refusal();
    Path const projects = Workspace::projectsFolder(workspace);
    try {
        ensureFolder(projects);
    } catch (FileError const& error) {
        throw WorkspaceError(validUtf8(error.what()));
    }
    for (;;) {
        Path const folder = freeFolder(projects, *usable);
        std::error_code error;
        if (std::filesystem::create_directory(folder, error))
            return folder;
        if (error)
            fail(folder, "created", error);
        // Another process has just created it: try the next number.
    }
}

Outcome<Path> renameProject(Path const& project, std::string_view name)
{
    Path const folder = namedFolder(project);
    auto const usable = validProjectName(name);
    if (!usable)
        return usable.refusal();
    Path const target = folder.parent_path() / *usable;
    if (target == folder)
        return folder;
    if (!isThere(folder))
        return goneRefusal(folder);
    // Its own name may change in case alone; the same name as another project is a clash.
    std::error_code error;
    bool const isOwn = lowerCased(*usable) == lowerCased(folder.filename().string());
    bool const isAnother = std::filesystem::exists(target, error) &&
                           !std::filesystem::equivalent(target, folder, error);
    if (isAnother || (!isOwn && freeFolder(folder.parent_path(), *usable) != target))
        return Refusal{Reason::projectNameTaken, Subject::named(*usable)};
    std::filesystem::rename(folder, target, error);
    if (error)
        fail(folder, "renamed", error);
    return target;
}

Outcome<Path> duplicateProject(Path const& project)
{
    return duplicateProject(project, namedFolder(project).filename().string());
}

Outcome<Path> duplicateProject(Path const& project, std::string_view name)
{
    Path const folder = namedFolder(project);
    auto const usable = validProjectName(name);
    if (!usable)
        return usable.refusal();
    if (!isThere(folder))
        return goneRefusal(folder);
    Path const target = freeFolder(folder.parent_path(), *usable);
    StagedCopy copy(target);
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (!isHidden(entry->path()) && entry->path() != Workspace::exportsFolder(folder))
            copy.take(entry->path());
    }
    if (error)
        fail(folder, "copied", error);
    copy.appearAs(target);
    return target;
}

Outcome<Path> trashProject(Path const& project)
{
    Path const folder = namedFolder(project);
    if (!isThere(folder))
        return goneRefusal(folder);
    QFile entry(QFile::decodeName(folder.c_str()));
    try {
        requireTrash();
    } catch (FileError const& error) {
        throw WorkspaceError(WorkspaceMessage::couldNotBeTrashed(folder, error.reason));
    }
    if (!entry.moveToTrash())
        throw WorkspaceError(
            WorkspaceMessage::couldNotBeTrashed(folder, entry.errorString().toStdString()));
    return Path(QFile::encodeName(entry.fileName()).toStdString());
}

} // namespace framewright
