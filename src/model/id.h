#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace framewright {

/// Identity of a project, track, clip, bar, style or asset: a UUID.
///
/// Its text form is the canonical one, 36 characters, upper case. Ids are ordered by that text.
class Id {
public:
    /// The nil id, all zero. Never used in a document.
    constexpr Id() = default;

    /// A fresh random id (version 4). Safe on any thread.
    static Id random();

    /// Reads the canonical form in either case; nothing when the text is of another form.
    static std::optional<Id> parse(std::string_view text);

    /// The id whose last byte is `last` and whose others are zero: the fixed ids.
    static constexpr Id fixed(std::uint8_t last)
    {
        Id id;
        id.m_bytes[15] = last;
        return id;
    }

    std::string text() const;

    bool isNil() const { return *this == Id(); }

    auto operator<=>(Id const&) const = default;

private:
    friend struct std::hash<Id>;
    std::array<std::uint8_t, 16> m_bytes{};
};

} // namespace framewright

template <>
struct std::hash<framewright::Id> {
    std::size_t operator()(framewright::Id const& id) const noexcept;
};
