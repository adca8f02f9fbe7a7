#pragma once

#include <QString>

namespace framewright {

/// The text in capitals, by the rules of its scripts and whatever the user's language is: ß becomes
/// SS, both kinds of i become I, Greek loses its accents and breathings, as Greeks write it, but for
/// a lone ή, and Georgian stays as it is.
QString capitals(QString const& text);

} // namespace framewright
