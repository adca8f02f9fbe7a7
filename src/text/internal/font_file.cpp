#include "text/internal/font_file.h"

#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>

namespace framewright {

namespace {

std::uint32_t number(std::string_view bytes, std::size_t at, int length = 4)
{
    std::uint32_t value = 0;
    for (int i = 0; i < length; ++i)
        value = value << 8 | static_cast<std::uint8_t>(bytes[at + static_cast<std::size_t>(i)]);
    return value;
}

/// The sum of a table's 32-bit numbers, padded with zeros (OpenType, "Calculating checksums").
std::uint32_t checksum(std::string_view table)
{
    std::uint32_t sum = 0;
    std::size_t at = 0;
    for (; at + 4 <= table.size(); at += 4)
        sum += number(table, at);
    std::string last(table.substr(at));
    last.resize(4, '\0');
    return sum + number(last, 0);
}

/// Empty if it can't be read.
std::string contentOf(std::filesystem::path const& file)
{
    std::error_code unreadable;
    auto const size = std::filesystem::file_size(file, unreadable);
    if (unreadable)
        return {};
    std::string content(size, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(content.data(), static_cast<std::streamsize>(size));
    content.resize(static_cast<std::size_t>(stream.gcount()));
    return content;
}

constexpr std::size_t headerSize = 12;
constexpr std::size_t entrySize = 16;

} // namespace

bool isWholeFontFile(std::filesystem::path const& file)
{
    std::string const content = contentOf(file);
    std::string_view const bytes = content;
    if (bytes.size() < headerSize)
        return false;
    std::string_view const kind = bytes.substr(0, 4);
    std::size_t const tables = number(bytes, 4, 2);
    if (kind != std::string_view("\0\1\0\0", 4) && kind != "OTTO")
        return false;
    if (tables == 0 || bytes.size() < headerSize + tables * entrySize)
        return false;
    for (std::size_t i = 0; i < tables; ++i) {
        std::size_t const entry = headerSize + i * entrySize;
        std::size_t const offset = number(bytes, entry + 8);
        std::size_t const length = number(bytes, entry + 12);
        if (offset > bytes.size() || length > bytes.size() - offset)
            return false;
        std::string_view const table = bytes.substr(offset, length);
        std::uint32_t sum = checksum(table);
        // "head" contains the checksum of the whole file, which its own doesn't include.
        if (bytes.substr(entry, 4) == "head" && length >= headerSize)
            sum -= number(table, 8);
        if (sum != number(bytes, entry + 4))
            return false;
    }
    return true;
}

} // namespace framewright
