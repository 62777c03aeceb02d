#pragma once

#include "analysis/status_sink.h"
#include "app/number_text.h"
#include "app/status_lines.h"
#include "scan/control_panel_ids.h"

namespace tessaro {

/// The analysis tells the operator through the control panel.
class PanelStatus : public StatusSink {
public:
    explicit PanelStatus(StatusLines& status) : m_status(status) {}

    void ShowInformation(std::string_view text) override { m_status.ShowInformation(text); }
    void ShowTotalFound(std::int32_t total) override {
        m_status.ShowItem(panel::totalFound, Formatted("%d", total));
    }

private:
    StatusLines& m_status;
};

} // namespace tessaro
