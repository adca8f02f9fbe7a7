// Saving the project of a ProjectFiles, and taking in what other programs write.

#include "editor/files/project_files.h"

#include "workspace/workspace_messages.h"

namespace framewright {

QCoro::Task<void> ProjectFiles::save()
{
    // No await inside a condition: GCC 12 also destroys its task on the path not taken.
    bool const isSaved = co_await m_sync.saveNow();
    if (!isSaved && !m_sync.problem().empty())
        throw ProjectFileError(m_sync.problem());
    // A restored project is in its own file now, so it is kept there like any other.
    if (m_file && isInWorkspace())
        m_sync.setSaving(FileSync::Saving::automatic);
}

void ProjectFiles::saveBeforeQuitting()
{
    if (m_sync.flush() || !m_document.isOpen())
        return;
    throw ProjectFileError(m_sync.problem().empty()
                               ? "“" + projectName() +
                                     "” has changes that are not saved; a recovery copy holds them."
                               : m_sync.problem());
}

StoredProject ProjectFiles::stored() const
{
    return {m_document.project(), m_media.places().refs, m_recovery.file()};
}

/// Theirs becomes a step of the history; our unsaved changes are one step back.
Taken ProjectFiles::takeOutsideEdit(Decoded<StoredProject> const& theirs)
{
    m_recovery.clear(); // The file holds what is open.
    AssetRefs refs = m_media.places().refs;
    for (auto const& [id, ref] : theirs.value.refs)
        refs[id] = ref;
    m_media.setPlaces({m_media.places().projectFolder, std::move(refs)});
    Project const& project = theirs.value.project;
    if (project == m_document.project())
        return Taken::asItIs;
    bool const hasOtherMedia = !(project.assets == m_document.project().assets);
    m_document.commit(project, "Edit on Disk", Author::disk);
    if (hasOtherMedia)
        m_media.load();
    return Taken::asItIs;
}

std::string ProjectFiles::sentenceOf(FileTrouble const& trouble) const
{
    bool const isSaveFailure = trouble.during == FileTrouble::During::saving &&
                               trouble.cause == FileTrouble::Cause::failed;
    return isSaveFailure ? "Could not save " + projectFileName(trouble.file) + ": " + trouble.reason
                         : WorkspaceMessage::invalidProject(projectName());
}

} // namespace framewright
