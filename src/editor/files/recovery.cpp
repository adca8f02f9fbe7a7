#include "editor/files/recovery.h"

#include "editor/files/project_file.h"
#include "model/file_url.h"
#include "model/project_document.h"
#include "platform/atomic_file.h"
#include "platform/paths.h"

namespace framewright {

namespace {

constexpr char const* originKey = "recoveryOriginPath";

std::optional<std::filesystem::path> originIn(UserDefaults const& defaults)
{
    auto const text = defaults.string(originKey);
    auto const url = text ? FileURL::parse(*text) : std::nullopt;
    return url ? std::optional<std::filesystem::path>(url->path) : std::nullopt;
}

/// A copy under another name, left by a run that found one waiting under the usual name.
std::optional<std::filesystem::path> leftCopy(std::filesystem::path const& folder)
{
    std::error_code failed;
    for (auto const& entry : std::filesystem::directory_iterator(folder, failed)) {
        if (entry.path().extension() == ".fwp")
            return entry.path();
    }
    return std::nullopt;
}

} // namespace

Recovery::Recovery(UserDefaults& defaults) : m_defaults(defaults)
{
    std::filesystem::path const folder = applicationSupportFolder() / "Recovery";
    std::filesystem::path const usual = folder / "recovery.fwp";
    std::error_code failed;
    m_file = usual;
    for (int number = 2; std::filesystem::exists(m_file, failed); ++number)
        m_file = folder / ("recovery " + std::to_string(number) + ".fwp");
    if (m_file != usual) {
        m_waiting = Waiting{usual, originIn(defaults)};
    } else if (auto const left = leftCopy(folder)) {
        m_waiting = Waiting{*left, std::nullopt};
    }
}

void Recovery::rememberOrigin(std::optional<std::filesystem::path> const& origin)
{
    // The key describes the copy that the next run will find under the usual name.
    if (m_waiting)
        return;
    if (origin)
        m_defaults.setString(originKey, FileURL{origin->string()}.text());
    else
        m_defaults.remove(originKey);
}

void Recovery::adoptWaiting()
{
    if (!m_waiting)
        return;
    m_file = m_waiting->file;
    m_waiting.reset();
}

void Recovery::discardWaiting()
{
    std::error_code failed;
    if (m_waiting)
        std::filesystem::remove(m_waiting->file, failed);
    if (failed)
        throw ProjectFileError("The recovery copy could not be removed: " + failed.message() + ".");
    m_waiting.reset();
    m_defaults.remove(originKey);
}

void Recovery::clear()
{
    std::error_code failed;
    std::filesystem::remove(m_file, failed);
}

void Recovery::write(std::filesystem::path const& file, Project const& project)
{
    try {
        ensurePrivateFolder(file.parent_path());
        writeFileAtomically(file, ProjectDocument(project).data());
    } catch (std::exception const& error) {
        throw ProjectFileError(std::string("Could not save a recovery copy: ") + error.what());
    }
}

} // namespace framewright
