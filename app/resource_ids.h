#pragma once

#include <cstdint>

namespace tessaro {

/// Numbers of the resources.
namespace resource {
inline constexpr int aboutDialog = 103;
inline constexpr int mainMenu = 109;
inline constexpr int accelerators = 109;
inline constexpr int contrastDialog = 129;
inline constexpr int stageDialog = 130;
inline constexpr int icon = 136;
inline constexpr int controlPanel = 137;
inline constexpr int portDialog = 141;
} // namespace resource

/// Ids of the menu's commands.
namespace command {
inline constexpr std::uint32_t information = 104;
inline constexpr std::uint32_t exit = 105;
inline constexpr std::uint32_t redImage = 32776;
inline constexpr std::uint32_t blueImage = 32777;
inline constexpr std::uint32_t capture = 32780;
inline constexpr std::uint32_t greenImage = 32783;
inline constexpr std::uint32_t discernContrast = 32787;
inline constexpr std::uint32_t configuration = 32788;
inline constexpr std::uint32_t noiseRejection = 32791;
inline constexpr std::uint32_t findSingleLayers = 32794;
inline constexpr std::uint32_t startScan = 32800;
inline constexpr std::uint32_t settingXyStage = 32801;
inline constexpr std::uint32_t stop = 32802;
inline constexpr std::uint32_t saveImage = 32804;
inline constexpr std::uint32_t grouping = 32806;
inline constexpr std::uint32_t originalImage = 32807;
inline constexpr std::uint32_t autoContrastOnce = 32809;
inline constexpr std::uint32_t xyStageConfiguration = 32810;
inline constexpr std::uint32_t autoFocusing = 32811;
inline constexpr std::uint32_t pauseResume = 32812;
inline constexpr std::uint32_t controlPanel = 32814;
inline constexpr std::uint32_t importImage = 32816;
inline constexpr std::uint32_t stopStartGrabbing = 32817;
inline constexpr std::uint32_t showBackground = 32818;
inline constexpr std::uint32_t backgroundFitting = 32820;
} // namespace command

} // namespace tessaro
