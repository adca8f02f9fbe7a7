#include "model/id.h"

#include "model/internal/hex_digits.h"

#include <cstring>
#include <random>

namespace framewright {

namespace {

bool isDashPlace(std::size_t place)
{
    return place == 8 || place == 13 || place == 18 || place == 23;
}

} // namespace

Id Id::random()
{
    thread_local std::random_device device;
    Id id;
    for (std::size_t i = 0; i < id.m_bytes.size(); i += 4) {
        std::uint32_t const word = device();
        std::memcpy(id.m_bytes.data() + i, &word, 4);
    }
    id.m_bytes[6] = static_cast<std::uint8_t>((id.m_bytes[6] & 0x0F) | 0x40);
    id.m_bytes[8] = static_cast<std::uint8_t>((id.m_bytes[8] & 0x3F) | 0x80);
    return id;
}

std::optional<Id> Id::parse(std::string_view text)
{
    if (text.size() != 36)
        return std::nullopt;
    Id id;
    std::size_t digit = 0;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (isDashPlace(place)) {
            if (text[place] != '-')
                return std::nullopt;
            continue;
        }
        int const value = hexValue(text[place]);
        if (value < 0)
            return std::nullopt;
        auto& byte = id.m_bytes[digit / 2];
        byte = static_cast<std::uint8_t>(byte << 4 | value);
        ++digit;
    }
    return id;
}

std::string Id::text() const
{
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < m_bytes.size(); ++i) {
        if (isDashPlace(text.size()))
            text += '-';
        text += upperHexDigits[m_bytes[i] >> 4];
        text += upperHexDigits[m_bytes[i] & 0x0F];
    }
    return text;
}

} // namespace framewright

std::size_t std::hash<framewright::Id>::operator()(framewright::Id const& id) const noexcept
{
    // Ids are random, or fixed ones that differ in the last byte: the last eight bytes hash well.
    std::size_t value = 0;
    std::memcpy(&value, id.m_bytes.data() + 8, sizeof value);
    return value;
}
