#pragma once

#include <QString>

#include <vector>

namespace framewright {

/// A range of a text, in UTF-16 code units.
struct TextSpan {
    qsizetype start = 0;
    qsizetype length = 0;

    bool operator==(TextSpan const&) const = default;
};

/// The family that emoji are drawn in. It may not be installed.
QString emojiFamily();

/// The ranges of a text that are emoji. Adjacent emoji form one range; sequences such as flags,
/// keycaps, skin tones and families (Unicode Technical Standard 51) are never split.
///
/// These ranges need the emoji family as their first choice: many text fonts have a heart or digits
/// and would split "❤️‍🔥" and "1️⃣". Symbols with text presentation by default (❤
/// ☀ ©) count as emoji only before U+FE0F.
std::vector<TextSpan> emojiRanges(QString const& text);

} // namespace framewright
