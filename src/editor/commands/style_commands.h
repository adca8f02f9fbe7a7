#pragma once

#include "model/outcome.h"
#include "model/style.h"
#include "styles/style_store.h"

#include <optional>
#include <string>
#include <vector>

namespace framewright {

/// A number of a style with its new value, under the name the front door has for it.
struct StyleNumber {
    std::string name;
    float CaptionStyle::*field;
    double value;
};

/// Changes to a style; what is not given stays. Giving any part of an effect switches it on; the
/// parts that have no value yet get usual ones.
struct StyleChanges {
    std::optional<std::string> fontName = {};
    std::optional<RGBAColor> textColor = {};
    std::optional<bool> uppercase = {};
    std::optional<bool> box = {};
    std::optional<RGBAColor> boxColor = {};
    std::optional<bool> shadow = {};
    std::optional<bool> outline = {};
    std::optional<RGBAColor> outlineColor = {};
    std::vector<StyleNumber> numbers = {};

    bool isEmpty() const;
};

/// The style with its changes. Refused for a number out of range.
Outcome<CaptionStyle> changed(CaptionStyle style, StyleChanges const& changes);

/// A style to make, or to change when `known`.
struct StyleToSave {
    std::string name;
    std::optional<std::string> newName = {};
    std::optional<CaptionStyle> startFrom = {}; ///< Else the known one, else the default.
    std::optional<Id> known = {};               ///< The one to change.
    StyleChanges changes = {};
};

/// A saved style, and a sentence for each value that was out of range.
struct SavedStyle {
    CaptionStyle style;
    bool isNew = true;
    std::vector<std::string> notes;
};

/// Refused for a name that is empty, has several lines or more than 200 bytes, or is taken.
Outcome<SavedStyle> saveStyle(StyleStore& store, StyleToSave const& wanted);

} // namespace framewright
