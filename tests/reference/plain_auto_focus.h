#pragma once

#include <cstdint>
#include <string>

namespace tessaro::reference {

/// What the plain searches do to the world, one call each.
class FocusMachine {
public:
    virtual ~FocusMachine() = default;

    virtual int PumpMessages(std::uint32_t milliseconds) = 0; // 0: the user chose to stop
    virtual void GrabAndDraw() = 0;
    virtual float FocusScore() = 0;
    virtual void UpdateFocusMeasures() = 0;
    virtual double QueryPosition() = 0; // of Z, um
    virtual void SetSpeed(std::int32_t umPerSecond) = 0;
    virtual void MoveAxisBy(double um) = 0;
    virtual void MoveAxisTo(double um) = 0;
    virtual void StopAxis() = 0;
    virtual void ShowInformation(const std::string& text) = 0;
    virtual void ShowProgress(const std::string& text) = 0;
    virtual void ShowStagePosition() = 0;
    virtual bool LiveViewRuns() = 0;
    virtual void SwitchLiveView(bool on) = 0;
    virtual void ShowErrorBox(const std::string& text, const std::string& caption) = 0;

    virtual float FocusValue() = 0;
    virtual double& Position() = 0; // of Z, um
    virtual std::int32_t& FocusBusy() = 0;
    virtual std::int32_t& StopRequested() = 0;
    virtual std::int32_t& Scanning() = 0;
};

/// Both searches as they are defined, step by step.
void CoarseFocus(FocusMachine& machine, int range, int speed);
int FineFocus(FocusMachine& machine, float hint, int focusSpeed);

} // namespace tessaro::reference
