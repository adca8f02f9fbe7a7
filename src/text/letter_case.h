#pragma once

#include <QString>

namespace framewright {

/// The text in capitals, by the rules of its scripts and independent of the user's locale: ß
/// becomes SS, both kinds of i become I, Greek loses its accents and breathings (except in a lone
/// ή), and Georgian is unchanged.
QString capitals(QString const& text);

} // namespace framewright
