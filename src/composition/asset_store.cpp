#include "composition/asset_store.h"

namespace framewright {

LoadedAsset const* AssetStore::find(Id const& id) const
{
    auto const found = m_loaded->find(id);
    return found == m_loaded->end() ? nullptr : &found->second;
}

void AssetStore::insert(Id const& id, LoadedAsset asset)
{
    m_loaded.edit().insert_or_assign(id, std::move(asset));
}

void AssetStore::erase(Id const& id)
{
    m_loaded.edit().erase(id);
}

} // namespace framewright
