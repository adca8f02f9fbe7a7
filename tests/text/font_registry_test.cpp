#include "text/font_registry.h"

#include "platform/test_folder.h"
#include "text/internal/carried_fonts.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QImage>
#include <QPainter>
#include <QRawFont>

#include <gmock/gmock.h>

#include <set>
#include <thread>

namespace framewright {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

FontRegistry const& carried()
{
    static FontRegistry const registry(CARRIED_FONTS);
    return registry;
}

/// A copy of the carried fonts to damage. It must outlive the test, since Qt keeps registered
/// fonts.
struct SomeFonts : TestFolder {
    SomeFonts() { std::filesystem::copy(CARRIED_FONTS, path()); }
};

std::string familyOf(FontRegistry::Found const& found)
{
    return QFontInfo(found.font).family().toStdString();
}

QImage drawn(QFont font, QString const& text)
{
    QImage image(600, 100, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    font.setPixelSize(48);
    QPainter painter(&image);
    painter.setFont(font);
    painter.drawText(20, 70, text);
    return image;
}

std::vector<std::string> described(FontRegistry const& registry)
{
    std::vector<std::string> lines;
    for (auto const& missing : registry.missingCarried()) {
        bool const isDamaged = missing.why == FontRegistry::Missing::Why::damaged;
        lines.push_back(missing.fontName + (isDamaged ? " is damaged: " : " is absent: ") +
                        missing.substitute);
    }
    return lines;
}

} // namespace

TEST(FontRegistry, CarriedFontsAreFoundUnderTheirNames)
{
    struct Case {
        char const* fontName;
        char const* family;
        int weight;
    };
    std::set<std::string> images;
    for (Case const& c : {
             Case{"InstrumentSans-Regular_SemiBold", "Instrument Sans", 600},
             Case{"Gabarito-Regular_SemiBold", "Gabarito", 600},
             Case{"BebasNeue-Regular", "Bebas Neue", 400},
             Case{"Neonderthaw-Regular", "Neonderthaw", 400},
             Case{"CourierPrime-Regular", "Courier Prime", 400},
             Case{"CourierPrime-Bold", "Courier Prime", 700},
             Case{"AnticDidone-Regular", "Antic Didone", 400},
             Case{"CormorantGaramond-SemiBold", "Cormorant Garamond", 600},
             Case{"Lexend-SemiBold", "Lexend", 600},
             Case{"MarckScript-Regular", "Marck Script", 400},
             Case{"JetBrainsMonoRoman-Medium", "JetBrains Mono", 500},
             Case{"Quicksand-Bold", "Quicksand", 700},
             Case{"GravitasOne", "Gravitas One", 400},
             Case{"FjallaOne-Regular", "Fjalla One", 400},
             Case{"CaveatRoman-Bold", "Caveat", 700},
             Case{"ProtestRevolution-Regular", "Protest Revolution", 400},
             Case{"system:light", "Inter", 300},
             Case{"system:regular", "Inter", 400},
             Case{"system:medium", "Inter", 500},
             Case{"system:semibold", "Inter", 600},
             Case{"system:bold", "Inter", 700},
             Case{"system:heavy", "Inter", 800},
             Case{"mono:light", "JetBrains Mono", 300},
             Case{"mono:heavy", "JetBrains Mono", 800},
         }) {
        auto const found = carried().find(c.fontName);
        EXPECT_EQ(found.substitute, std::nullopt) << c.fontName;
        EXPECT_EQ(familyOf(found), c.family) << c.fontName;
        EXPECT_EQ(QFontInfo(found.font).weight(), c.weight) << c.fontName;
        // A real face, not a synthetic bold: no two draw the same.
        QImage const image = drawn(found.font, QStringLiteral("Hamburg 27"));
        auto const* const bits = reinterpret_cast<char const*>(image.constBits());
        images.emplace(bits, static_cast<std::size_t>(image.sizeInBytes()));
    }
    EXPECT_EQ(images.size(), 24u);
    EXPECT_THAT(described(carried()), IsEmpty());
}

TEST(FontRegistry, SubstitutesTheNearestFont)
{
    struct Case {
        char const* fontName;
        char const* substitute;
    };
    for (Case const& c : {
             Case{"AvenirNext-Medium", "Nunito Sans Medium"},
             Case{"AvenirNext-DemiBold", "Nunito Sans SemiBold"},
             Case{"AvenirNext-Bold", "Nunito Sans Bold"},
             Case{"HelveticaNeue-Light", "Inter Light"},
             Case{"HelveticaNeue-Medium", "Inter Medium"},
             Case{"HelveticaNeue-Bold", "Inter Bold"},
             Case{"Baskerville-SemiBold", "Libre Baskerville SemiBold"},
             Case{"NoSuchMono-ExtraBold", "JetBrains Mono ExtraBold"},
             Case{"NoSuchSerif-Thin", "Libre Baskerville"},
             Case{"mono:enormous", "JetBrains Mono"},
             Case{"", "Inter"},
             Case{"\xFF\xFE", "Inter"},
         }) {
        auto const found = carried().find(c.fontName);
        EXPECT_EQ(found.substitute, c.substitute) << c.fontName;
        EXPECT_NE(found.font.families(), QFont().families()) << c.fontName;
    }
}

TEST(FontRegistry, InstalledFontsAreFoundByPostScriptName)
{
    struct Case {
        char const* fontName;
        char const* family;
        char const* style;
    };
    for (Case const& c : {
             Case{"DejaVuSans", "DejaVu Sans", "Book"},
             Case{"DejaVuSerif-Bold", "DejaVu Serif", "Bold"},
             Case{"DejaVuSansCondensed-BoldOblique", "DejaVu Sans", "Condensed Bold Oblique"},
             Case{"Inter-ExtraBold", "Inter", "ExtraBold"},
         }) {
        auto const found = carried().find(c.fontName);
        EXPECT_EQ(found.substitute, std::nullopt) << c.fontName;
        EXPECT_EQ(familyOf(found), c.family) << c.fontName;
        EXPECT_EQ(QRawFont::fromFont(found.font).styleName().toStdString(), c.style) << c.fontName;
    }
    EXPECT_THAT(carried().installedNames(), testing::IsSupersetOf({"DejaVuSans", "Inter-Light"}));
}

TEST(FontRegistry, ReportsMissingFontsAndTheirSubstitutes)
{
    static SomeFonts const folder;
    std::filesystem::remove(folder / "BebasNeue-Regular.ttf");
    std::filesystem::remove(folder / "Inter-Light.ttf");
    std::string damaged = contentsOf(folder / "Caveat-Bold.ttf");
    damaged[damaged.size() / 2] ^= 1;
    put(folder / "Caveat-Bold.ttf", damaged);
    put(folder / "GravitasOne-Regular.ttf",
        contentsOf(folder / "GravitasOne-Regular.ttf").substr(0, 20'000));
    put(folder / "MarckScript-Regular.ttf", "no font");

    FontRegistry const registry(folder.path());
    EXPECT_THAT(described(registry),
                ElementsAre("BebasNeue-Regular is absent: Fjalla One",
                            "MarckScript-Regular is damaged: Protest Revolution",
                            "GravitasOne is damaged: Libre Baskerville Bold",
                            "CaveatRoman-Bold is damaged: Protest Revolution",
                            "system:light is absent: Inter"));
    EXPECT_EQ(registry.find("CaveatRoman-Bold").substitute, "Protest Revolution");
    EXPECT_EQ(familyOf(registry.find("BebasNeue-Regular")), "Fjalla One");
}

TEST(FontRegistry, FallsBackToInstalledFonts)
{
    TestFolder const folder;
    FontRegistry const registry(folder / "none");
    EXPECT_EQ(registry.missingCarried().size(), carriedFonts().size());
    EXPECT_EQ(registry.find("system:bold").substitute, "DejaVu Sans Bold");
    EXPECT_EQ(registry.find("CormorantGaramond-SemiBold").substitute, "DejaVu Serif Bold");
}

TEST(FontRegistry, TakesMissingLettersFromOtherFonts)
{
    // Letters in other subsets of the family, then of other scripts.
    for (char const* const name : {"Neonderthaw-Regular", "system:light", "mono:heavy"}) {
        QFont const font = carried().find(name).font;
        QImage const noGlyph = drawn(font, QStringLiteral("\U000F0000"));
        for (char const* const letter : {"ő", "ệ", "Ж", "日", "한", "ع", "ש", "हि", "ไ"})
            EXPECT_NE(drawn(font, QString::fromUtf8(letter)), noGlyph) << name << letter;
    }
}

TEST(FontRegistry, EmojiHaveColor)
{
    QImage const emoji = drawn(carried().find("BebasNeue-Regular").font, QStringLiteral("😀"));
    int colored = 0;
    for (int y = 0; y < emoji.height(); ++y) {
        for (int x = 0; x < emoji.width(); ++x)
            colored += QColor::fromRgba(emoji.pixel(x, y)).saturation() > 128 ? 1 : 0;
    }
    EXPECT_GT(colored, 500);
}

TEST(FontRegistry, DrawsTheSameOnEveryThread)
{
    TestFolder const folder;
    FontRegistry const registry(CARRIED_FONTS); // Loaded by the first thread.
    std::vector<std::string> names;
    for (FontOption const& option : fontOptions())
        names.emplace_back(option.fontName);
    QString const text = QStringLiteral("Ağ ő 日本 عر 😀👨‍👩‍👧‍👦");

    std::vector<std::vector<QImage>> images(4);
    std::vector<std::thread> threads;
    for (auto& mine : images) {
        threads.emplace_back([&] {
            for (std::string const& name : names)
                mine.push_back(drawn(registry.find(name).font, text));
        });
    }
    for (auto& thread : threads)
        thread.join();
    for (auto const& other : images)
        EXPECT_TRUE(other == images.front());
}

TEST(FontRegistry, FindsLettersThatNoFontHas)
{
    // Unassigned, private use, and invisible format characters.
    EXPECT_THAT(carried().lettersWithoutFont("a\u0378é\n\u0378 שЖ\u200D\uFE0F\U0010FFFD"),
                ElementsAre("\u0378", "\U0010FFFD"));
    EXPECT_THAT(carried().lettersWithoutFont("plain"), IsEmpty());
    std::string many;
    for (char last = '\x80'; last < '\xBD'; ++last)
        many += std::string("\xF4\x8F\xBF") + last;
    EXPECT_EQ(carried().lettersWithoutFont(many).size(), 10u);
}

} // namespace framewright
