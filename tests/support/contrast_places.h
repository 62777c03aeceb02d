#pragma once

#include "support/panel_places.h"

#include <map>

namespace tessaro {

/// A point of each of these controls of the colour contrast dialog that can be clicked on, by the control's
/// id.
inline const std::map<int, PanelPlace> contrastPlaces = {
    {1017, {201, 157}}, {1018, {323, 157}}, {1019, {445, 157}}, // red, green, blue
    {1020, {582, 157}},                                         // Tolerance
    {1009, {208, 187}}, {1010, {208, 219}},                     // + and - of red
    {1027, {589, 187}}, {1026, {589, 219}},                     // + and - of the tolerance
    {1007, {167, 308}},                                         // Score Threshold
    {1008, {230, 363}},                                         // Test now
    {1, {449, 363}},    {2, {598, 363}},                        // Set, Done
};

/// Around such a point of an edit: within the edit, with the beginning of its text.
inline constexpr int contrastTextReach = 36;
inline constexpr int contrastTextHalfHeight = 9;

} // namespace tessaro
