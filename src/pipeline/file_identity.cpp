#include "pipeline/file_identity.h"

#include <system_error>

namespace framewright {

FileIdentity FileIdentity::of(std::filesystem::path const& file)
{
    // One that cannot be looked at fails when it is opened, with a better sentence.
    std::error_code ignored;
    return {file, std::filesystem::file_size(file, ignored),
            std::filesystem::last_write_time(file, ignored)};
}

} // namespace framewright
