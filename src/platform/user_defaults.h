#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

/// The settings of this user that belong to no workspace, by key ("workspace.path").
///
/// A value that names a settings file; copies refer to the same
/// file. Every read sees what was last written, also by another process, and every write is on
/// disk when it returns. Texts are UTF-8. May be used from any thread.
class UserDefaults {
public:
    /// Framewright.ini in configFolder().
    static UserDefaults ofUser();

    explicit UserDefaults(std::filesystem::path file);

    /// Nothing when the key is absent or its value is of another type. From a damaged file
    /// it reads what it can.
    std::optional<std::string> string(std::string const& key) const;
    std::optional<std::vector<std::string>> strings(std::string const& key) const;
    std::optional<double> number(std::string const& key) const;
    std::optional<bool> flag(std::string const& key) const;

    /// These throw FileError when the file can't be written or is damaged, and leave it unchanged.
    void setString(std::string const& key, std::string const& value);
    void setStrings(std::string const& key, std::vector<std::string> const& values);
    void setNumber(std::string const& key, double value);
    void setFlag(std::string const& key, bool value);
    void remove(std::string const& key);

    std::filesystem::path const& file() const { return m_file; }

private:
    std::filesystem::path m_file;
};

} // namespace framewright
