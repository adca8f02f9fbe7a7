#include "pipeline/file_identity.h"

#include <system_error>

namespace framewright {

FileIdentity FileIdentity::of(std::filesystem::path const& file)
{
    // If this fails, so will opening the file, with a better message.
    std::error_code ignored;
    return {file, std::filesystem::file_size(file, ignored),
            std::filesystem::last_write_time(file, ignored)};
}

} // namespace framewright
