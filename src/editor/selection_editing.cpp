// The commands of an AppState that work on what is selected.

#include "editor/app_state.h"

namespace framewright {

namespace {

Refusal nothingSelected()
{
    return {Reason::nothingSelected};
}

} // namespace

Outcome<SplitClip> AppState::splitAtPlayhead()
{
    return splitClip(m_selectedClip, m_activeTrack, m_currentTime);
}

Outcome<Removed> AppState::deleteSelection()
{
    if (!m_selectedClip)
        return nothingSelected();
    Id const id = *m_selectedClip;
    return removeClips(std::span(&id, 1));
}

Outcome<PlacedClips> AppState::duplicateSelection()
{
    if (!m_selectedClip)
        return nothingSelected();
    Id const id = *m_selectedClip;
    return duplicateClips(std::span(&id, 1));
}

Outcome<CopiedClip> AppState::copySelection()
{
    if (!m_selectedClip)
        return nothingSelected();
    Id const id = *m_selectedClip;
    copyClips(std::span(&id, 1));
    return m_copied.front();
}

Outcome<Nudged> AppState::nudgeSelection(double seconds)
{
    if (!m_selectedClip)
        return nothingSelected();
    Id const id = *m_selectedClip;
    return nudgeClips(std::span(&id, 1), seconds);
}

Outcome<Project> AppState::setSelectedTransform(ClipTransform const& transform)
{
    if (!m_selectedClip)
        return nothingSelected();
    ClipChanges changes;
    changes.transform = transform;
    return changeClip(*m_selectedClip, changes);
}

Outcome<Project> AppState::resetSelectedTransform()
{
    return setSelectedTransform(ClipTransform());
}

} // namespace framewright
