#include "app/status_lines.h"

#include "app/number_text.h"
#include "scan/control_panel_ids.h"

#include <string>

namespace tessaro {
namespace {

constexpr std::array<int, 3> positionBoxes = {panel::positionX, panel::positionY, panel::positionZ};

} // namespace

void StatusLines::ShowItem(int controlId, std::string_view text) {
    if (m_windows.controlPanel != WindowHandle::None)
        m_dialogs.SetItemText(m_windows.controlPanel, controlId, std::string(text));
}

int StatusLines::ShowInformation(std::string_view text) {
    ShowItem(panel::information, text);
    if (m_listener != nullptr)
        m_listener->InformationShown(text);
    return 1;
}

int StatusLines::ShowProgress(std::string_view text) {
    ShowItem(panel::progress, text);
    if (m_listener != nullptr)
        m_listener->ProgressShown(text);
    return 1;
}

int StatusLines::ShowStagePosition() {
    if (m_windows.controlPanel == WindowHandle::None)
        return 0;
    for (std::size_t axis = 0; axis < positionBoxes.size(); ++axis) {
        const std::int32_t um = TruncatedToInt32(m_stage.position[axis]);
        if (um == m_shown.um[axis] && m_shown.shownOnce == 1)
            continue;
        m_shown.um[axis] = um;
        ShowItem(positionBoxes[axis], Formatted("%d", um));
    }
    m_shown.shownOnce = 1;
    return 1;
}

} // namespace tessaro
