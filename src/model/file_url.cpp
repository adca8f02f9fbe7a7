#include "model/file_url.h"

#include "model/internal/hex_digits.h"

#include <cstdint>

namespace framewright {

namespace {

constexpr std::string_view scheme = "file://";

bool isUnreserved(unsigned char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~' || c == '/';
}

/// Length of the well-formed UTF-8 sequence at the front of `text`, 0 when there is none.
std::size_t sequenceLength(std::string_view text)
{
    auto const byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    unsigned char const lead = byte(0);
    if (lead < 0x80)
        return 1;
    std::size_t const length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length)
        return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    }
    // Overlong forms, surrogates and values above U+10FFFF.
    if ((lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F) ||
        (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F))
        return 0;
    return length;
}

} // namespace

std::string FileURL::text() const
{
    std::string url(scheme);
    for (char const c : path) {
        auto const byte = static_cast<unsigned char>(c);
        if (isUnreserved(byte)) {
            url += c;
        } else {
            url += '%';
            url += upperHexDigits[byte >> 4];
            url += upperHexDigits[byte & 0x0F];
        }
    }
    return url;
}

std::optional<FileURL> FileURL::parse(std::string_view url)
{
    if (!url.starts_with(scheme))
        return std::nullopt;
    url.remove_prefix(scheme.size());
    if (url.starts_with("localhost/"))
        url.remove_prefix(std::string_view("localhost").size());
    if (!url.starts_with('/'))
        return std::nullopt;

    FileURL result;
    for (std::size_t i = 0; i < url.size(); ++i) {
        if (url[i] != '%') {
            result.path += url[i];
            continue;
        }
        if (i + 2 >= url.size())
            return std::nullopt;
        int const high = hexValue(url[i + 1]);
        int const low = hexValue(url[i + 2]);
        if (high < 0 || low < 0 || (high == 0 && low == 0))
            return std::nullopt;
        result.path += static_cast<char>(high << 4 | low);
        i += 2;
    }
    return result;
}

std::string validUtf8(std::string_view text)
{
    std::string valid;
    valid.reserve(text.size());
    while (!text.empty()) {
        std::size_t const length = sequenceLength(text);
        if (length == 0) {
            valid += "\xEF\xBF\xBD";
            text.remove_prefix(1);
        } else {
            valid += text.substr(0, length);
            text.remove_prefix(length);
        }
    }
    return valid;
}

bool isValidUtf8(std::string_view text)
{
    while (!text.empty()) {
        std::size_t const length = sequenceLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace framewright
