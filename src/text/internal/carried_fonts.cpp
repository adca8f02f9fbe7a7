#include "text/internal/carried_fonts.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace framewright {

namespace {

constexpr std::array carried{
    CarriedFont{"InstrumentSans-Regular_SemiBold", "InstrumentSans-SemiBold"},
    CarriedFont{"Gabarito-Regular_SemiBold", "Gabarito-SemiBold"},
    CarriedFont{"BebasNeue-Regular", "BebasNeue-Regular"},
    CarriedFont{"Neonderthaw-Regular", "Neonderthaw-Regular"},
    CarriedFont{"CourierPrime-Regular", "CourierPrime-Regular"},
    CarriedFont{"CourierPrime-Bold", "CourierPrime-Bold"},
    CarriedFont{"AnticDidone-Regular", "AnticDidone-Regular"},
    CarriedFont{"CormorantGaramond-SemiBold", "CormorantGaramond-SemiBold"},
    CarriedFont{"Lexend-SemiBold", "Lexend-SemiBold"},
    CarriedFont{"MarckScript-Regular", "MarckScript-Regular"},
    CarriedFont{"JetBrainsMonoRoman-Medium", "JetBrainsMono-Medium"},
    CarriedFont{"Quicksand-Bold", "Quicksand-Bold"},
    CarriedFont{"GravitasOne", "GravitasOne-Regular"},
    CarriedFont{"FjallaOne-Regular", "FjallaOne-Regular"},
    CarriedFont{"CaveatRoman-Bold", "Caveat-Bold"},
    CarriedFont{"ProtestRevolution-Regular", "ProtestRevolution-Regular"},

    // Subsets of two of the above, published as separate families.
    CarriedFont{"NeonderthawExtended-Regular", "NeonderthawExtended-Regular"},
    CarriedFont{"NeonderthawVietnamese-Regular", "NeonderthawVietnamese-Regular"},
    CarriedFont{"ProtestRevolutionExtended-Regular", "ProtestRevolutionExtended-Regular"},
    CarriedFont{"ProtestRevolutionVietnamese-Regular", "ProtestRevolutionVietnamese-Regular"},

    CarriedFont{"system:light", "Inter-Light"},
    CarriedFont{"system:regular", "Inter-Regular"},
    CarriedFont{"system:medium", "Inter-Medium"},
    CarriedFont{"system:semibold", "Inter-SemiBold"},
    CarriedFont{"system:bold", "Inter-Bold"},
    CarriedFont{"system:heavy", "Inter-ExtraBold"},
    CarriedFont{"mono:light", "JetBrainsMono-Light"},
    CarriedFont{"mono:regular", "JetBrainsMono-Regular"},
    CarriedFont{"mono:medium", "JetBrainsMono-Medium"},
    CarriedFont{"mono:semibold", "JetBrainsMono-SemiBold"},
    CarriedFont{"mono:bold", "JetBrainsMono-Bold"},
    CarriedFont{"mono:heavy", "JetBrainsMono-ExtraBold"},

    // Hebrew for all of the above.
    CarriedFont{"NotoSansHebrew-Light", "NotoSansHebrew-Light"},
    CarriedFont{"NotoSansHebrew-Regular", "NotoSansHebrew-Regular"},
    CarriedFont{"NotoSansHebrew-SemiBold", "NotoSansHebrew-SemiBold"},
    CarriedFont{"NotoSansHebrew-Bold", "NotoSansHebrew-Bold"},

    // Substitutes for fonts whose licence doesn't allow shipping them.
    CarriedFont{"NunitoSans-Medium", "NunitoSans-Medium"},
    CarriedFont{"NunitoSans-SemiBold", "NunitoSans-SemiBold"},
    CarriedFont{"NunitoSans-Bold", "NunitoSans-Bold"},
    CarriedFont{"LibreBaskerville-Regular", "LibreBaskerville-Regular"},
    CarriedFont{"LibreBaskerville-SemiBold", "LibreBaskerville-SemiBold"},
    CarriedFont{"LibreBaskerville-Bold", "LibreBaskerville-Bold"},
};

using Words = std::pair<std::string_view, FontKind>;

/// Words in a font's name that indicate its kind. The first match counts.
constexpr std::array kindWords{
    Words{"courier", FontKind::typewriter},
    Words{"typewriter", FontKind::typewriter},
    Words{"mono", FontKind::mono},
    Words{"code", FontKind::mono},
    Words{"menlo", FontKind::mono},
    Words{"consol", FontKind::mono},
    Words{"bebas", FontKind::condensed},
    Words{"fjalla", FontKind::condensed},
    Words{"condensed", FontKind::condensed},
    Words{"narrow", FontKind::condensed},
    Words{"compressed", FontKind::condensed},
    Words{"impact", FontKind::condensed},
    Words{"gravitas", FontKind::poster},
    Words{"poster", FontKind::poster},
    Words{"slab", FontKind::poster},
    Words{"didone", FontKind::didone},
    Words{"didot", FontKind::didone},
    Words{"bodoni", FontKind::didone},
    Words{"avenir", FontKind::round},
    Words{"nunito", FontKind::round},
    Words{"quicksand", FontKind::round},
    Words{"gabarito", FontKind::round},
    Words{"lexend", FontKind::round},
    Words{"futura", FontKind::round},
    Words{"round", FontKind::round},
    Words{"neonderthaw", FontKind::script},
    Words{"caveat", FontKind::script},
    Words{"script", FontKind::script},
    Words{"protest", FontKind::script},
    Words{"hand", FontKind::script},
    Words{"brush", FontKind::script},
    Words{"sans", FontKind::sans},
    Words{"serif", FontKind::serif},
    Words{"baskerville", FontKind::serif},
    Words{"garamond", FontKind::serif},
    Words{"times", FontKind::serif},
    Words{"georgia", FontKind::serif},
    Words{"palatino", FontKind::serif},
};

using Weight = std::pair<std::string_view, int>;

/// Words in a font's name that indicate its weight, longer ones before those they contain.
constexpr std::array weightWords{
    Weight{"thin", 100},  Weight{"extralight", 200}, Weight{"ultralight", 200},
    Weight{"light", 300}, Weight{"medium", 500},     Weight{"semibold", 600},
    Weight{"demi", 600},  Weight{"extrabold", 800},  Weight{"ultrabold", 800},
    Weight{"bold", 700},  Weight{"heavy", 800},      Weight{"black", 900},
};

using Families = std::array<std::string_view, 5>;
constexpr Families sans{"Inter", "Instrument Sans", "Nunito Sans", "DejaVu Sans"};
constexpr Families roundOnes{"Nunito Sans", "Lexend", "Gabarito", "Quicksand", "Inter"};
constexpr Families condensed{"Bebas Neue", "Fjalla One", "DejaVu Sans Condensed", "Inter"};
constexpr Families poster{"Gravitas One", "Bebas Neue", "Libre Baskerville", "Inter"};
constexpr Families serif{"Libre Baskerville", "Cormorant Garamond", "Antic Didone", "DejaVu Serif"};
constexpr Families didone{"Antic Didone", "Cormorant Garamond", "Libre Baskerville",
                          "DejaVu Serif"};
constexpr Families mono{"JetBrains Mono", "Courier Prime", "DejaVu Sans Mono"};
constexpr Families typewriter{"Courier Prime", "JetBrains Mono", "DejaVu Sans Mono"};
constexpr Families script{"Caveat", "Marck Script", "Protest Revolution", "Inter"};

} // namespace

std::span<CarriedFont const> carriedFonts()
{
    return carried;
}

FontTraits impliedTraits(std::string_view fontName)
{
    std::string name;
    for (char const c : fontName) {
        if (c != '-' && c != '_' && c != ' ')
            name += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    auto const isIn = [&](auto const& row) { return name.find(row.first) != std::string::npos; };
    FontTraits traits;
    if (auto const kind = std::ranges::find_if(kindWords, isIn); kind != kindWords.end())
        traits.kind = kind->second;
    if (auto const weight = std::ranges::find_if(weightWords, isIn); weight != weightWords.end())
        traits.weight = weight->second;
    else if (traits.kind == FontKind::condensed || traits.kind == FontKind::poster)
        traits.weight = 700; // Headline fonts come in one weight, which is bold.
    return traits;
}

std::span<std::string_view const> similarFamilies(FontKind kind)
{
    switch (kind) {
    case FontKind::sans:
        return sans;
    case FontKind::round:
        return roundOnes;
    case FontKind::condensed:
        return condensed;
    case FontKind::poster:
        return poster;
    case FontKind::serif:
        return serif;
    case FontKind::didone:
        return didone;
    case FontKind::mono:
        return mono;
    case FontKind::typewriter:
        return typewriter;
    case FontKind::script:
        return script;
    }
    return sans;
}

} // namespace framewright
