#include "analysis/panel_status.h"
#include "support/shell_fixture.h"

namespace tessaro {
namespace {

using PanelStatusTest = ShellFixture;

TEST_F(PanelStatusTest, WritesTheLineAndTheTotalIntoTheirBoxes) {
    PanelStatus panelStatus(status);
    panelStatus.ShowInformation("2 single layer detected!");
    panelStatus.ShowTotalFound(17);
    EXPECT_EQ(PanelText(1006), "2 single layer detected!");
    EXPECT_EQ(PanelText(1041), "17");
}

TEST_F(PanelStatusTest, WritesNothingIntoAClosedPanel) {
    PanelStatus panelStatus(status);
    ClosePanel();
    panelStatus.ShowInformation("lost");
    panelStatus.ShowTotalFound(17);
    EXPECT_TRUE(ui.dialogs.textsSet.empty());
}

} // namespace
} // namespace tessaro
