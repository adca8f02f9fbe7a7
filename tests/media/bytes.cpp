#include "media/bytes.h"

#include "media/made_media.h"

namespace framewright {

using namespace std::string_literals;

std::filesystem::path fileOf(std::string const& name, std::string const& bytes)
{
    auto const file = testFolder() / name;
    put(file, bytes);
    return file;
}

std::string bigEndian(std::uint64_t value, int count)
{
    std::string bytes;
    for (int i = count - 1; i >= 0; --i)
        bytes += char(value >> (8 * i) & 0xFF);
    return bytes;
}

std::string pngHeader(std::uint32_t width, std::uint32_t height)
{
    std::string const chunk =
        "IHDR" + bigEndian(width, 4) + bigEndian(height, 4) + "\x08\x02\0\0\0"s;
    std::uint32_t check = 0xFFFFFFFF;
    for (char const c : chunk) {
        check ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            check = check >> 1 ^ (check & 1 ? 0xEDB88320U : 0);
    }
    return "\x89PNG\r\n\x1A\n"s + bigEndian(13, 4) + chunk + bigEndian(~check, 4) +
           bigEndian(1000, 4) + "IDAT";
}

std::string withExifOrientation(std::string const& jpeg, int orientation)
{
    std::string const block = "Exif\0\0MM\0*\0\0\0\x08"s + bigEndian(1, 2) + bigEndian(0x0112, 2) +
                              bigEndian(3, 2) + bigEndian(1, 4) +
                              bigEndian(std::uint64_t(orientation), 2) + "\0\0\0\0\0\0"s;
    return jpeg.substr(0, 2) + "\xFF\xE1"s + bigEndian(block.size() + 2, 2) + block +
           jpeg.substr(2);
}

} // namespace framewright
