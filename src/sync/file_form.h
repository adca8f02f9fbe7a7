#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace framewright {

/// A value that was read from a file.
template <class T>
struct Decoded {
    T value;
    std::vector<std::string> notes = {};       ///< What was corrected, a sentence each.
    std::vector<std::string> unknownKeys = {}; ///< Those the next save drops.
};

/// Whether a file holds the value now.
enum class InFile { no, yes };

/// The stored form of a value. Runs on workers, and may outlive the owner: captures values only.
template <class T>
struct FileForm {
    /// The bytes to store in `file`, whose place may matter to paths in them.
    std::function<std::string(T const& value, std::filesystem::path const& file)> encode;
    /// Throws when the bytes hold no valid value; `what()` says where.
    std::function<Decoded<T>(std::string_view bytes)> decode;
    /// Maintains a second copy of the value, such as one that exists while the file does not hold
    /// it. Called after every attempt to save. Throws with a whole sentence. May be empty.
    std::function<void(T const& value, InFile)> alsoKeep = {};
    /// A larger file is not read.
    std::uintmax_t largestFile = std::numeric_limits<std::uintmax_t>::max();
    /// Whether the file's folder, but none above it, is made when it is missing.
    bool makesFolder = false;
};

/// What an owner did with another program's version.
enum class Taken {
    asItIs, ///< Memory holds exactly that version now.
    merged, ///< Memory holds something else, which has to be saved.
};

/// Why a file could not be read or saved.
struct FileTrouble {
    enum class During { reading, saving };
    enum class Cause {
        failed,  ///< The system refused, or another program keeps writing the file.
        invalid, ///< Its content does not decode. It is left alone until it does.
    };

    std::filesystem::path file;
    During during;
    Cause cause;
    std::string reason;
};

/// The owner of a value in memory. Called on the main thread only, and never after the synced file
/// is gone.
template <class T>
struct FileOwner {
    std::function<T()> value;
    /// Takes in what another program wrote. `base` is the version before it, which both sides
    /// started from; null when there is none.
    std::function<Taken(Decoded<T> const& theirs, T const* base)> take;
    /// The whole sentence a user reads.
    std::function<std::string(FileTrouble const&)> describe;
};

} // namespace framewright
