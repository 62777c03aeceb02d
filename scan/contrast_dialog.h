#pragma once

#include "analysis/frame_measurements.h"
#include "app/settings.h"
#include "imaging/frame_buffer.h"
#include "platform/dialogs.h"
#include "scan/contrast_choices.h"
#include "scan/field_work.h"

#include <cstddef>
#include <cstdint>

namespace tessaro {

/// Where the operator says what a single layer looks like, and sees on the current frame what that finds.
/// It changes the settings themselves, at once: closing it takes nothing back.
class ContrastDialog : public DialogProcedure {
public:
    /// What the dialog shows, what it sets, and where it is tried.
    struct Reach {
        Dialogs& dialogs;
        Settings& settings;
        ContrastChoices& choices;
        const FrameRecord& frame;
        const FrameMeasurements& measured;
        const float& focusValue;
        FieldWork& work;
    };

    explicit ContrastDialog(const Reach& reach) : m_reach(reach) {}

    /// Until "Done".
    void Show(WindowHandle owner);

    void Initialize(WindowHandle dialog) override;
    void Command(WindowHandle dialog, int controlId, Notification notification) override;

private:
    void ShowSettings(WindowHandle dialog);
    void ShowMeasured(WindowHandle dialog);
    void ShowContrasts(WindowHandle dialog, const char* format);
    void ShowNumber(WindowHandle dialog, int controlId, const char* format, double value);

    bool TakeSubstrate(WindowHandle dialog);
    void Act(WindowHandle dialog, int controlId);
    void StepContrast(WindowHandle dialog, std::size_t channel, float by);
    void StepTolerance(WindowHandle dialog, float by);
    void ChooseMaterial(WindowHandle dialog, std::int32_t material);
    void ApplyPreset(WindowHandle dialog);
    void SwitchSmoothing(WindowHandle dialog);
    void RefreshImage();
    void TestNow(WindowHandle dialog);
    void Set(WindowHandle dialog);
    void SetContrasts(WindowHandle dialog);
    void SetTolerance(WindowHandle dialog);

    void FindAgain();
    void Detect();

    Reach m_reach;
};

} // namespace tessaro
