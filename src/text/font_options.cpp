#include "text/font_options.h"

#include <array>

namespace framewright {

namespace {

constexpr std::array options{
    FontOption{"Classic (Instrument Sans)", "InstrumentSans-Regular_SemiBold"},
    FontOption{"Modern (Gabarito)", "Gabarito-Regular_SemiBold"},
    FontOption{"Strong (Bebas Neue)", "BebasNeue-Regular"},
    FontOption{"Neon (Neonderthaw)", "Neonderthaw-Regular"},
    FontOption{"Typewriter (Courier Prime)", "CourierPrime-Regular"},
    FontOption{"Typewriter Bold (Courier Prime)", "CourierPrime-Bold"},
    FontOption{"Elegant (Antic Didone)", "AnticDidone-Regular"},
    FontOption{"Literature (Cormorant Garamond)", "CormorantGaramond-SemiBold"},
    FontOption{"Directional (Lexend)", "Lexend-SemiBold"},
    FontOption{"Signature (Marck Script)", "MarckScript-Regular"},
    FontOption{"Editor (JetBrains Mono)", "JetBrainsMonoRoman-Medium"},
    FontOption{"Deco (Quicksand)", "Quicksand-Bold"},
    FontOption{"Poster (Gravitas One)", "GravitasOne"},
    FontOption{"Squeeze (Fjalla One)", "FjallaOne-Regular"},
    FontOption{"Journal (Caveat)", "CaveatRoman-Bold"},
    FontOption{"Rosalia (Protest Revolution)", "ProtestRevolution-Regular"},
    FontOption{"Avenir Next Medium", "AvenirNext-Medium"},
    FontOption{"Avenir Next Demi Bold", "AvenirNext-DemiBold"},
    FontOption{"Avenir Next Bold", "AvenirNext-Bold"},
    FontOption{"Helvetica Neue Light", "HelveticaNeue-Light"},
    FontOption{"Helvetica Neue Medium", "HelveticaNeue-Medium"},
    FontOption{"Helvetica Neue Bold", "HelveticaNeue-Bold"},
    FontOption{"Baskerville Semibold", "Baskerville-SemiBold"},
};

constexpr std::array<std::string_view, 6> weightNames{"light",    "regular", "medium",
                                                      "semibold", "bold",    "heavy"};

} // namespace

std::span<FontOption const> fontOptions()
{
    return options;
}

std::span<std::string_view const> fontWeightNames()
{
    return weightNames;
}

} // namespace framewright
