#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include <stdlib.h>

namespace framewright {

/// A fresh folder that goes with this value.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string form = (std::filesystem::temp_directory_path() / "framewright-XXXXXX").native();
        if (!::mkdtemp(form.data()))
            throw std::runtime_error("no temporary folder");
        m_path = form;
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    ~TemporaryFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }

    std::filesystem::path const& path() const { return m_path; }
    std::filesystem::path operator/(std::string_view name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

} // namespace framewright
