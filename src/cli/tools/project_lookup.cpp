#include "cli/tools/project_lookup.h"

#include "workspace/project_folders.h"
#include "workspace/workspace.h"

#include <algorithm>

namespace framewright {

namespace {

bool isSameName(std::string const& a, std::string const& b)
{
    return QString::fromStdString(a).compare(QString::fromStdString(b), Qt::CaseInsensitive) == 0;
}

} // namespace

std::filesystem::path workspaceOf(ToolArgs const& args, AppState& editor)
{
    auto const current = Workspace::url(editor.defaults());
    auto const around = Workspace::findWorkspace(args.cwd());
    if (!around && !current)
        throw RefusedEdit({Reason::noWorkspace});
    if (!around)
        return accepted(Workspace::openable(*current));

    std::filesystem::path const folder = accepted(Workspace::openable(*around));
    if (!current || Workspace::canonicalPath(*current) != Workspace::canonicalPath(folder))
        editor.setWorkspace(folder);
    return folder;
}

std::filesystem::path fileOfProject(ToolArgs const& args, Param<Text> const& project,
                                    AppState& editor)
{
    std::string const word = args[project];
    if (auto const name = validProjectName(word)) {
        auto const listings = listProjects(workspaceOf(args, editor));
        auto const found = std::ranges::find_if(listings, [&](ProjectListing const& listing) {
            return isSameName(listing.name, *name);
        });
        if (found != listings.end())
            return Workspace::projectFile(found->folder);
        if (!word.ends_with(".fwp") && !word.ends_with(".json"))
            throw RefusedEdit({Reason::projectUnknown, Subject::named(word)});
    }
    std::filesystem::path const path = args[Param<FilePath>(project.name)];
    return std::filesystem::is_directory(path) ? Workspace::projectFile(path) : path;
}

} // namespace framewright
