#include "platform/paths.h"

#include "platform/file_error.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace framewright {

namespace {

using Path = std::filesystem::path;

std::optional<Path> folderInEnvironment(char const* variable)
{
    char const* const value = std::getenv(variable);
    if (!value || value[0] != '/')
        return std::nullopt;
    return Path(value);
}

/// The home of the named account, else of this user's.
std::optional<Path> accountHome(std::optional<std::string> const& user)
{
    std::vector<char> buffer(1024);
    for (;;) {
        passwd entry{};
        passwd* found = nullptr;
        int const error =
            user ? ::getpwnam_r(user->c_str(), &entry, buffer.data(), buffer.size(), &found)
                 : ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
        if (error == ERANGE) {
            buffer.resize(2 * buffer.size());
            continue;
        }
        if (!found || !found->pw_dir || found->pw_dir[0] != '/')
            return std::nullopt;
        return Path(found->pw_dir);
    }
}

Path ownFolder(char const* variable, char const* belowHome)
{
    auto const base = folderInEnvironment(variable);
    return (base ? *base : homeFolder() / belowHome) / "Framewright";
}

/// Creates a folder and its missing parents, all private; existing ones are not changed.
void makePrivateFolders(Path const& folder)
{
    if (::mkdir(folder.c_str(), 0700) == 0)
        return;
    if (errno == ENOENT && folder.has_parent_path() && folder.parent_path() != folder) {
        makePrivateFolders(folder.parent_path());
        if (::mkdir(folder.c_str(), 0700) == 0)
            return;
    }
    if (errno != EEXIST)
        throw FileError::fromWriting(folder, "created", errno);
}

} // namespace

Path homeFolder()
{
    if (auto const home = folderInEnvironment("HOME"))
        return *home;
    if (auto const home = accountHome(std::nullopt))
        return *home;
    throw FileError(FileError::Cause::missing, "~", "found",
                    "this account has no home folder; set HOME to one");
}

Path applicationSupportFolder()
{
    return ownFolder("XDG_DATA_HOME", ".local/share");
}

Path cachesFolder()
{
    return ownFolder("XDG_CACHE_HOME", ".cache");
}

Path configFolder()
{
    return ownFolder("XDG_CONFIG_HOME", ".config");
}

Path temporaryFolder()
{
    return folderInEnvironment("TMPDIR").value_or("/tmp");
}

Path expandTilde(std::string_view path)
{
    if (!path.starts_with('~'))
        return Path(path);
    std::size_t const slash = std::min(path.find('/'), path.size());
    std::string const user(path.substr(1, slash - 1));
    auto const home = user.empty() ? homeFolder() : accountHome(user);
    if (!home)
        return Path(path);
    std::string_view const rest = path.substr(std::min(slash + 1, path.size()));
    return rest.empty() ? *home : *home / rest;
}

void ensureFolder(Path const& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        throw FileError::fromWriting(folder, "created", error.value());
}

void ensurePrivateFolder(Path const& folder)
{
    makePrivateFolders(folder.has_filename() ? folder : folder.parent_path());
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0)
        throw FileError::fromWriting(folder, "created", errno);
    if (!S_ISDIR(status.st_mode))
        throw FileError::fromWriting(folder, "created", ENOTDIR);
    if (status.st_uid != ::geteuid())
        throw FileError(FileError::Cause::unwritable, folder, "used", "it belongs to another user");
    if ((status.st_mode & 07777) != 0700 && ::chmod(folder.c_str(), 0700) != 0)
        throw FileError::fromWriting(folder, "made private", errno);
}

} // namespace framewright
