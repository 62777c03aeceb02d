#pragma once

namespace tessaro {

/// Controls of the control panel (dialog 137).
namespace panel {
inline constexpr int positionX = 1000;
inline constexpr int positionY = 1003;
inline constexpr int positionZ = 1005;
inline constexpr int laplaceM = 1001;
inline constexpr int laplaceS = 1020;
inline constexpr int deviation = 1037;
inline constexpr int focus = 1038;
inline constexpr int information = 1006;
inline constexpr int progress = 1007;
inline constexpr int totalFound = 1041;
inline constexpr int startScan = 1013;
inline constexpr int testScore = 1014;
inline constexpr int stop = 1032;
inline constexpr int setOrigin = 1011;
inline constexpr int goToOrigin = 1010;
inline constexpr int goToFarX = 1008;
inline constexpr int goToFarY = 1009;
inline constexpr int up = 1042; // by 1 um of Z
inline constexpr int down = 1029;
inline constexpr int slope = 1026;
inline constexpr int xTilt = 1035; // um of Z per um
inline constexpr int yTilt = 1040;
inline constexpr int xRange = 1012;
inline constexpr int yRange = 1015;
inline constexpr int tiltCorrection = 1004;
inline constexpr int targetX = 1002;
inline constexpr int targetY = 1021;
inline constexpr int targetZ = 1022;
inline constexpr int move = 1027;
inline constexpr int depthAtOrigin = 1019; // um of Z
inline constexpr int depthAtFarX = 1017;
inline constexpr int depthAtFarY = 1018;
inline constexpr int coarse = 1016;
inline constexpr int fine = 1024; // a coarse search over half the range
inline constexpr int autoFocus = 1023;
} // namespace panel

} // namespace tessaro
