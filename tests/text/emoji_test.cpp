#include "text/internal/emoji.h"

#include <gtest/gtest.h>

namespace framewright {

/// The text with its emoji in brackets.
std::string marked(QString text)
{
    auto const spans = emojiRanges(text);
    for (auto span = spans.rbegin(); span != spans.rend(); ++span) {
        text.insert(span->start + span->length, QLatin1Char(']'));
        text.insert(span->start, QLatin1Char('['));
    }
    return text.toStdString();
}

TEST(Emoji, SequencesStayWhole)
{
    for (auto const* const expected : {
             "",
             "No 1: Ж © 日本 →",
             "a[😀]b",
             "[😀👍🏽🎉]",
             "[🇩🇪🇫🇷]!",
             "[🇩]x",
             "[🏴󠁧󠁢󠁳󠁣󠁴󠁿] [👨‍👩‍👧‍👦]",
             "[❤️‍🔥] [❤️] ❤ [©️]",
             "[🏳️‍🌈] [👩🏽‍⚕️] [👩‍⚕]",
             "[1️⃣] [#⃣] 1️ 12",
             "[⚡] ⚡︎ [✌🏿] ✌",
             "[👨]‍x",
         }) {
        QString plain = QString::fromUtf8(expected);
        plain.remove(QLatin1Char('[')).remove(QLatin1Char(']'));
        EXPECT_EQ(marked(plain), expected);
    }
}

TEST(Emoji, IgnoresLoneSurrogates)
{
    QString const broken = QString(QChar(0xD83D)) + QLatin1Char('x') + QChar(0xDE00);
    EXPECT_TRUE(emojiRanges(broken).empty());
}

} // namespace framewright
