#pragma once

#include <functional>

namespace framewright {

/// Called repeatedly while a file is read: for each packet, and for each block read from disk.
///
/// Throwing from it, anything but a MediaError, stops the read: the exception reaches whoever asked
/// for the data, and the reader cannot be used any more.
using ReadingActivity = std::function<void()>;

} // namespace framewright
