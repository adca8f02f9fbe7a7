#include "media/internal/media_file.h"

#include "media/internal/media_failure.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>

namespace framewright {

namespace {

constexpr std::size_t headBytes = 64;

std::string_view textAt(std::span<std::uint8_t const> head, std::size_t from, std::size_t count)
{
    if (head.size() < from + count)
        return {};
    return {reinterpret_cast<char const*>(head.data()) + from, count};
}

} // namespace

Descriptor openMediaFile(std::filesystem::path const& file)
{
    using enum MediaError::Cause;
    // Without O_NONBLOCK, opening a pipe without a writer would block.
    Descriptor opened(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (!opened && (errno == ENOENT || errno == ENOTDIR))
        throw failure(missing, file, "does not exist.");
    if (!opened && errno == ENXIO) // A socket.
        throw failure(unsupported, file, "is not a regular file.");
    if (!opened)
        throw systemFailure(file, "opened", errno);

    struct stat facts {};
    if (::fstat(opened.number(), &facts) != 0)
        throw systemFailure(file, "opened", errno);
    if (S_ISDIR(facts.st_mode))
        throw failure(unsupported, file, "is a folder.");
    if (!S_ISREG(facts.st_mode))
        throw failure(unsupported, file, "is not a regular file.");
    if (facts.st_size == 0)
        throw failure(damaged, file, "is empty.");
    return opened;
}

std::vector<std::uint8_t> readHead(Descriptor const& opened, std::filesystem::path const& file)
{
    std::vector<std::uint8_t> head(headBytes);
    std::int64_t const got = opened.readAt(0, head);
    if (got < 0)
        throw systemFailure(file, "read", int(-got));
    head.resize(std::size_t(got));
    return head;
}

PhotoFormat photoFormat(std::span<std::uint8_t const> head)
{
    using namespace std::string_view_literals;
    if (textAt(head, 0, 3) == "\xFF\xD8\xFF"sv)
        return PhotoFormat::jpeg;
    if (textAt(head, 0, 8) == "\x89PNG\r\n\x1A\n"sv)
        return PhotoFormat::png;
    if (textAt(head, 0, 4) == "RIFF"sv && textAt(head, 8, 4) == "WEBP"sv)
        return PhotoFormat::webp;
    if (textAt(head, 0, 4) == "II*\0"sv || textAt(head, 0, 4) == "MM\0*"sv)
        return PhotoFormat::tiff;
    if (textAt(head, 0, 6) == "GIF87a"sv || textAt(head, 0, 6) == "GIF89a"sv)
        return PhotoFormat::gif;
    if (textAt(head, 4, 4) == "ftyp"sv) {
        constexpr std::string_view brands[] = {"heic", "heix", "heim", "heis", "hevc",
                                               "hevx", "mif1", "msf1", "avif", "avis"};
        if (std::ranges::find(brands, textAt(head, 8, 4)) != std::end(brands))
            return PhotoFormat::heif;
    }
    return PhotoFormat::none;
}

void checkImageSize(std::int64_t width, std::int64_t height, std::filesystem::path const& file)
{
    if (width > maxImageSide || height > maxImageSide)
        throw failure(MediaError::Cause::unsupported, file,
                      fmt::format("claims a size of {} × {} pixels; no side may be longer than "
                                  "{} pixels.",
                                  width, height, maxImageSide));
    if (width <= 0 || height <= 0)
        throw damage(file, "its width or height is missing");
}

} // namespace framewright
