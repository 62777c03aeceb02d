#pragma once

#include "support/panel_places.h"

#include <map>

namespace tessaro {

/// A point of each of these controls of the colour contrast dialog that can be clicked on, by the control's
/// id.
inline const std::map<int, PanelPlace> contrastPlaces = {
    {1017, {188, 145}}, {1018, {317, 145}}, {1019, {447, 145}}, // red, green, blue
    {1020, {577, 145}},                                         // Tolerance
    {1009, {172, 173}}, {1010, {225, 173}},                     // + and - of red
    {1027, {561, 173}}, {1026, {613, 173}},                     // + and - of the tolerance
    {1007, {155, 249}},                                         // Score Threshold
    {1008, {226, 303}},                                         // Test now
    {1, {441, 303}},    {2, {589, 303}},                        // Set, Done
};

/// Around such a point of an edit: within the edit, with the beginning of its text.
inline constexpr int contrastTextReach = 36;
inline constexpr int contrastTextHalfHeight = 9;

} // namespace tessaro
