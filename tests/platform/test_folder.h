#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace framewright {

/// A fresh folder for one test, gone with it.
class TestFolder {
public:
    TestFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "framewright-test-XXXXXX");
        if (!::mkdtemp(name.data()))
            throw std::runtime_error("no temporary folder");
        // Resolved, so that paths in it equal what the code under test resolves them to.
        m_path = std::filesystem::canonical(name);
    }
    ~TestFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    TestFolder(TestFolder const&) = delete;
    TestFolder& operator=(TestFolder const&) = delete;

    std::filesystem::path operator/(std::string_view name) const { return m_path / name; }
    std::filesystem::path const& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// An environment variable with another value while this lives; none for nullptr.
class TestVariable {
public:
    TestVariable(char const* name, char const* value) : m_name(name)
    {
        if (char const* const old = std::getenv(name))
            m_old = old, m_wasSet = true;
        set(value);
    }
    ~TestVariable() { set(m_wasSet ? m_old.c_str() : nullptr); }
    TestVariable(TestVariable const&) = delete;
    TestVariable& operator=(TestVariable const&) = delete;

private:
    void set(char const* value)
    {
        if (value)
            ::setenv(m_name, value, 1);
        else
            ::unsetenv(m_name);
    }

    char const* m_name;
    std::string m_old;
    bool m_wasSet = false;
};

/// Writes plainly, as any other program would; makes the folders on the way.
inline void put(std::filesystem::path const& file, std::string_view text = "")
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

inline std::string contentsOf(std::filesystem::path const& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline unsigned modeOf(std::filesystem::path const& path)
{
    return static_cast<unsigned>(std::filesystem::status(path).permissions());
}

/// The names of a folder's entries, in order.
inline std::vector<std::string> namesIn(std::filesystem::path const& folder)
{
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

/// The sentence `action` fails with, of the error type named; "" when it does not fail.
template <class Error, class Action>
std::string failureOf(Action const& action)
{
    try {
        action();
    } catch (Error const& error) {
        return error.what();
    }
    return "";
}

} // namespace framewright
