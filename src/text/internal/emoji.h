#pragma once

#include <QString>

#include <vector>

namespace framewright {

/// A stretch of a text, in UTF-16 units.
struct TextSpan {
    qsizetype start = 0;
    qsizetype length = 0;

    bool operator==(TextSpan const&) const = default;
};

/// The family that emoji are drawn in. It may be missing.
QString emojiFamily();

/// Where a text has emoji, each stretch as long as it goes; whole sequences, such as flags,
/// keycaps, skin tones and families, are never cut.
///
/// Those stretches are to be set in the emoji family first: many fonts of letters have a heart or a
/// digit of their own, and would tear "❤️‍🔥" and "1️⃣" apart. Symbols that are letters
/// unless somebody asks for the emoji (❤ ☀ ©) count where U+FE0F follows them.
std::vector<TextSpan> emojiRanges(QString const& text);

} // namespace framewright
