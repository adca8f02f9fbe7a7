#include "text/internal/emoji.h"

#include <algorithm>
#include <array>

namespace framewright {

namespace {

constexpr char32_t joiner = 0x200D;
constexpr char32_t asText = 0xFE0E;
constexpr char32_t asEmoji = 0xFE0F;
constexpr char32_t keycap = 0x20E3;

struct Range {
    char32_t first;
    char32_t last;
};

/// The characters below U+1F000 with emoji presentation by default.
constexpr std::array alwaysEmoji{
    Range{0x231A, 0x231B}, Range{0x23E9, 0x23EC}, Range{0x23F0, 0x23F0}, Range{0x23F3, 0x23F3},
    Range{0x25FD, 0x25FE}, Range{0x2614, 0x2615}, Range{0x2648, 0x2653}, Range{0x267F, 0x267F},
    Range{0x2693, 0x2693}, Range{0x26A1, 0x26A1}, Range{0x26AA, 0x26AB}, Range{0x26BD, 0x26BE},
    Range{0x26C4, 0x26C5}, Range{0x26CE, 0x26CE}, Range{0x26D4, 0x26D4}, Range{0x26EA, 0x26EA},
    Range{0x26F2, 0x26F3}, Range{0x26F5, 0x26F5}, Range{0x26FA, 0x26FA}, Range{0x26FD, 0x26FD},
    Range{0x2705, 0x2705}, Range{0x270A, 0x270B}, Range{0x2728, 0x2728}, Range{0x274C, 0x274C},
    Range{0x274E, 0x274E}, Range{0x2753, 0x2755}, Range{0x2757, 0x2757}, Range{0x2795, 0x2797},
    Range{0x27B0, 0x27B0}, Range{0x27BF, 0x27BF}, Range{0x2B1B, 0x2B1C}, Range{0x2B50, 0x2B50},
    Range{0x2B55, 0x2B55},
};

/// Above, whole blocks count, with the few whose default is text (🌡 🕊): no text font has
/// them.
constexpr std::array emojiBlocks{
    Range{0x1F004, 0x1F004}, Range{0x1F0CF, 0x1F0CF}, Range{0x1F18E, 0x1F18E},
    Range{0x1F191, 0x1F19A}, Range{0x1F201, 0x1F202}, Range{0x1F21A, 0x1F21A},
    Range{0x1F22F, 0x1F22F}, Range{0x1F232, 0x1F23A}, Range{0x1F250, 0x1F251},
    Range{0x1F300, 0x1F64F}, Range{0x1F680, 0x1F6FF}, Range{0x1F7E0, 0x1F7F0},
    Range{0x1F90C, 0x1F9FF}, Range{0x1FA70, 0x1FAFF},
};

template <std::size_t Count>
bool isIn(std::array<Range, Count> const& ranges, char32_t c)
{
    return std::ranges::any_of(ranges, [c](Range r) { return r.first <= c && c <= r.last; });
}

bool isSkinTone(char32_t c)
{
    return c >= 0x1F3FB && c <= 0x1F3FF;
}

bool isFlagLetter(char32_t c)
{
    return c >= 0x1F1E6 && c <= 0x1F1FF;
}

bool isTag(char32_t c)
{
    return c >= 0xE0020 && c <= 0xE007F;
}

/// Whether a following selector or skin tone may turn it into an emoji.
bool isSymbol(char32_t c)
{
    return c == 0xA9 || c == 0xAE || (c >= 0x203C && c <= 0x3299);
}

bool isKeycapBase(char32_t c)
{
    return (c >= '0' && c <= '9') || c == '#' || c == '*';
}

/// Parses emoji sequences.
class EmojiReader {
public:
    explicit EmojiReader(QString const& text) : m_text(text) {}

    /// The end of the emoji sequence that begins at `at`; `at` if there is none.
    qsizetype end(qsizetype at) const
    {
        qsizetype end = singleEnd(at);
        while (end > at && character(end) == joiner) {
            qsizetype const next = end + 1;
            qsizetype joined = singleEnd(next);
            // Within a sequence a symbol needs no selector.
            if (joined == next && isSymbol(character(next)))
                joined = next + 1;
            if (joined == next)
                break;
            end = joined;
        }
        return end;
    }

    qsizetype after(qsizetype at) const { return at + (character(at) > 0xFFFF ? 2 : 1); }

private:
    /// 0 past the end.
    char32_t character(qsizetype at) const
    {
        if (at >= m_text.size())
            return 0;
        QChar const unit = m_text[at];
        if (unit.isHighSurrogate() && at + 1 < m_text.size() && m_text[at + 1].isLowSurrogate())
            return QChar::surrogateToUcs4(unit, m_text[at + 1]);
        return unit.unicode();
    }

    /// The end of a single emoji, without any that are joined to it.
    qsizetype singleEnd(qsizetype at) const
    {
        char32_t const c = character(at);
        qsizetype const next = after(at);
        if (isFlagLetter(c))
            return isFlagLetter(character(next)) ? after(next) : next;
        if (isKeycapBase(c)) {
            qsizetype const cap = character(next) == asEmoji ? next + 1 : next;
            return character(cap) == keycap ? cap + 1 : at;
        }
        bool const isEmoji = isIn(alwaysEmoji, c) || isIn(emojiBlocks, c);
        if (isEmoji && character(next) == asText)
            return at;
        bool const isMarked = character(next) == asEmoji || isSkinTone(character(next));
        if (!isEmoji && !(isSymbol(c) && isMarked))
            return at;
        qsizetype end = next;
        if (character(end) == asEmoji)
            ++end;
        if (isSkinTone(character(end)))
            end = after(end);
        while (isTag(character(end)))
            end = after(end);
        return end;
    }

    QString const& m_text;
};

} // namespace

QString emojiFamily()
{
    return QStringLiteral("Noto Color Emoji");
}

std::vector<TextSpan> emojiRanges(QString const& text)
{
    std::vector<TextSpan> spans;
    EmojiReader const reader(text);
    for (qsizetype at = 0; at < text.size();) {
        qsizetype const end = reader.end(at);
        if (end == at) {
            at = reader.after(at);
            continue;
        }
        if (!spans.empty() && spans.back().start + spans.back().length == at)
            spans.back().length += end - at;
        else
            spans.push_back({at, end - at});
        at = end;
    }
    return spans;
}

} // namespace framewright
