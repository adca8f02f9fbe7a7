#pragma once

#include <QString>

namespace framewright {

/// The text in capitals, by the rules of its scripts and whatever the user's language is: ß becomes
/// SS, both kinds of i become I, and Greek loses its accents, as Greeks write it, but for a lone ή.
QString capitals(QString const& text);

} // namespace framewright
