#include "cli/internal/client_images.h"

#include "platform/file_error.h"
#include "platform/paths.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>

#include <fcntl.h>
#include <unistd.h>

namespace framewright {

namespace fs = std::filesystem;

namespace {

/// "frame-20261122-223105-123"
std::string timedName(std::string command, std::chrono::system_clock::time_point now)
{
    std::ranges::replace(command, '_', '-');
    std::ranges::replace(command, '/', '-');
    auto const seconds = std::chrono::floor<std::chrono::seconds>(now);
    auto const milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(now - seconds).count();
    std::time_t const time = std::chrono::system_clock::to_time_t(seconds);
    std::tm local{};
    ::localtime_r(&time, &local);
    std::array<char, 48> text{};
    std::size_t const length = std::strftime(text.data(), text.size(), "-%Y%m%d-%H%M%S", &local);
    std::snprintf(text.data() + length, text.size() - length, "-%03d",
                  static_cast<int>(milliseconds));
    return command + text.data();
}

/// The time in a name of `timedName`, numbered or not: "20261122-223105-123". Nothing in others.
std::optional<std::string> timeIn(std::string const& name)
{
    constexpr std::string_view shape = "dddddddd-dddddd-ddd";
    auto const isDigit = [](char c) { return c >= '0' && c <= '9'; };
    auto const hasShape = [&](char c, char wanted) {
        return wanted == 'd' ? isDigit(c) : c == '-';
    };
    for (std::string_view const command : {"frame-", "contact-sheet-"}) {
        if (!name.starts_with(command) || !name.ends_with(".png"))
            continue;
        std::string const rest = name.substr(command.size(), name.size() - command.size() - 4);
        std::string const time = rest.substr(0, shape.size());
        bool const isNumbered = std::ranges::all_of(rest.substr(time.size()),
                                                    [&](char c) { return c == '-' || isDigit(c); });
        if (std::ranges::equal(time, shape, hasShape) && isNumbered)
            return time;
    }
    return std::nullopt;
}

[[noreturn]] void fail(fs::path const& path, int errorNumber)
{
    throw ImageError(path.native() + ": " + systemErrorText(errorNumber));
}

void makeFolderOf(fs::path const& path)
{
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    if (error)
        fail(path.parent_path(), error.value());
}

bool writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        ssize_t const written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace

fs::path framesCache(fs::path const& workspace)
{
    return workspace / "cache" / "frames";
}

bool isWorkspace(fs::path const& folder)
{
    return std::ranges::any_of(std::array{"workspace.json", "library.json", "Framewright.md"},
                               [&](char const* name) {
                                   std::error_code error;
                                   return fs::is_regular_file(folder / name, error);
                               });
}

std::vector<fs::path> imagePaths(std::size_t count, std::string const& command,
                                 std::optional<std::string> const& out, fs::path const& folder,
                                 std::chrono::system_clock::time_point now,
                                 std::function<bool(fs::path const&)> const& isFree)
{
    fs::path place;
    bool isNamed = false;
    if (out) {
        std::error_code error;
        place = folder / expandTilde(*out);
        isNamed = place.has_filename() && !fs::is_directory(place, error);
    } else if (isWorkspace(folder)) {
        place = framesCache(folder);
    } else {
        place = temporaryFolder();
    }

    fs::path base = isNamed ? fs::path(place).replace_extension() : place / timedName(command, now);
    std::vector<fs::path> paths;
    for (std::size_t number = 1; number <= count; ++number) {
        std::string name = base.native();
        if (count > 1)
            name.append("-").append(std::to_string(number));
        fs::path path = name + ".png";
        for (int next = 2; !isNamed && !isFree(path); ++next)
            path = name + "-" + std::to_string(next) + ".png";
        paths.push_back(std::move(path));
    }
    return paths;
}

void removeOldImages(fs::path const& folder, std::size_t keep)
{
    std::vector<std::pair<std::string, fs::path>> images;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (auto time = timeIn(entry->path().filename().native()))
            images.emplace_back(std::move(*time), entry->path());
    }
    if (images.size() <= keep)
        return;
    auto const oldest = images.begin() + std::ptrdiff_t(images.size() - keep);
    std::ranges::nth_element(images, oldest);
    for (auto image = images.begin(); image != oldest; ++image)
        fs::remove(image->second, error);
}

bool claim(fs::path const& path)
{
    makeFolderOf(path);
    int const descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        if (errno == EEXIST)
            return false;
        fail(path, errno);
    }
    ::close(descriptor);
    return true;
}

void writeImage(fs::path const& path, std::string_view bytes)
{
    // Not flushed to disk like documents: it can be made again, and speed matters more.
    makeFolderOf(path);
    fs::path const temporary = path.parent_path() / ("." + path.filename().native() + "." +
                                                     std::to_string(::getpid()) + ".tmp");
    int const descriptor =
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (descriptor < 0)
        fail(path, errno);
    bool const isWritten = writeAll(descriptor, bytes);
    int const writing = errno;
    bool const isClosed = ::close(descriptor) == 0;
    if (isWritten && isClosed && ::rename(temporary.c_str(), path.c_str()) == 0)
        return;
    int const error = isWritten ? errno : writing;
    ::unlink(temporary.c_str());
    fail(path, error);
}

} // namespace framewright
