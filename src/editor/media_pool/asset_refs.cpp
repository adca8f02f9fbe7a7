#include "editor/media_pool/asset_refs.h"

#include <QByteArray>

#include <charconv>

namespace framewright {

namespace {

/// A reference's bookmark holds the file's size behind this label, in base 64.
constexpr std::string_view sizeLabel = "size=";

} // namespace

std::optional<std::uintmax_t> knownSize(AssetRef const& ref)
{
    if (!ref.bookmark)
        return std::nullopt;
    std::string const text =
        QByteArray::fromBase64(QByteArray::fromStdString(*ref.bookmark)).toStdString();
    std::uintmax_t size = 0;
    if (!text.starts_with(sizeLabel))
        return std::nullopt;
    char const* const first = text.data() + sizeLabel.size();
    auto const [end, error] = std::from_chars(first, text.data() + text.size(), size);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(size)
                                                                    : std::nullopt;
}

AssetRefs currentAssetRefs(Project const& project, std::filesystem::path const& folder,
                           AssetRefs const& known)
{
    AssetRefs refs;
    for (AssetRef& ref : ProjectDocument(project, folder).assetRefs) {
        std::error_code failed;
        auto const size = std::filesystem::file_size(project.asset(ref.id)->url.path, failed);
        auto const before = known.find(ref.id);
        if (failed && before != known.end()) {
            ref = before->second;
        } else if (!failed) {
            std::string const text = std::string(sizeLabel) + std::to_string(size);
            ref.bookmark = QByteArray::fromStdString(text).toBase64().toStdString();
        }
        refs.emplace(ref.id, std::move(ref));
    }
    return refs;
}

} // namespace framewright
