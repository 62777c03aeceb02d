#pragma once

#include <map>

namespace tessaro {

struct PanelPlace {
    int x = 0;
    int y = 0;
};

// The control panel's window as it stands on an ordinary screen, and where its controls lie in it.
inline constexpr int panelWidth = 620;
inline constexpr int panelHeight = 900;

/// A point of each control that can be clicked on, by the control's id.
inline const std::map<int, PanelPlace> panelPlaces = {
    {1000, {138, 65}},                                          // X, Y, Z
    {1003, {138, 97}},  {1005, {138, 129}}, {1002, {323, 65}},  // their targets
    {1021, {323, 97}},  {1022, {323, 129}}, {1027, {452, 97}},  // Move
    {1011, {128, 207}},                                         // Set Origin here
    {1010, {294, 416}}, {1008, {555, 416}}, {1009, {294, 203}}, // Origin, X max, Y max
    {1019, {172, 507}}, {1017, {306, 507}}, {1018, {441, 507}}, // the depths there
    {1026, {553, 497}},                                         // Slope
    {1035, {309, 535}}, {1040, {480, 535}},                     // X tilt, Y tilt
    {1012, {175, 320}},                                         // X range
    {1015, {175, 348}},                                         // Y range
    {1004, {31, 535}},                                          // Scan with tilt correction
    {1016, {116, 670}},                                         // Coarse
    {1023, {503, 670}},                                         // focus
    {1013, {97, 758}},                                          // Start Scan
    {1032, {358, 758}},                                         // Stop
    {1006, {170, 835}},                                         // Information
    {1007, {170, 869}},                                         // Progress
};

/// Around such a point of an edit: within the edit, with the beginning of its text.
inline constexpr int panelTextReach = 60; // to the left and to the right
inline constexpr int panelTextHalfHeight = 9;

/// Where there is no control.
inline constexpr PanelPlace panelCaption{60, 571};

} // namespace tessaro
