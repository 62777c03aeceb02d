#pragma once

#include "app/program.h"
#include "app/settings_file.h"
#include "imaging/picture_to_frame.h"
#include "platform/fake/fake_user_interface.h"
#include "platform/standard/absent_cameras.h"
#include "platform/standard/absent_serial_ports.h"
#include "scan/control_panel_ids.h"
#include "support/drawn_frames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tessaro {

using Texts = std::vector<std::string>;

inline constexpr auto mainWindow = static_cast<WindowHandle>(1); // made first
inline constexpr auto popupWindow = static_cast<WindowHandle>(2);
inline constexpr const char* defaultLine =
    "3,-12.000000,-8.000000,-2.000000,6.000000,10,10,100,4,70.000000\n";

/// The program is in its message loop: it took 10 ms for the main window and 100 ms after the stage.
inline constexpr std::uint64_t started = 111;

/// The whole program on a fake machine, without camera and stage.
class ProgramTest : public testing::Test {
protected:
    int RunUntil(std::uint64_t end) {
        ui.messages.PostAt(end, {mainWindow, MessageKind::Close});
        const int result = RunProgram(*globals, ui.Adapters(), {*cameraRuntime, *serialPorts});
        EXPECT_FALSE(ui.messages.waitedForEver);
        EXPECT_EQ(ui.drawing.contextsHeld, 0);
        return result;
    }

    void ChooseAt(std::uint64_t time, std::uint32_t command) {
        ui.messages.PostAt(time, {mainWindow, MessageKind::Command, command});
    }
    void PressAt(std::uint64_t time, std::uint32_t key) {
        ui.messages.PostAt(time, {mainWindow, MessageKind::KeyDown, key});
    }
    /// Looks at the program at a time of its run.
    void At(std::uint64_t time, const std::function<void()>& look) {
        const auto number = static_cast<std::uint32_t>(m_looks.size());
        m_looks.push_back(look);
        ui.messages.PostAt(time, {WindowHandle::None, MessageKind::Other, 0, number});
        ui.messages.onDispatch = [this](const Message& message) {
            if (message.kind == MessageKind::Other)
                m_looks[message.position]();
        };
    }

    std::vector<std::uint64_t> TickTimes(std::uint64_t end) {
        std::vector<std::uint64_t> times;
        ui.messages.onDispatch = [&](const Message& message) {
            if (message.kind == MessageKind::Timer)
                times.push_back(ui.clock.now);
        };
        RunUntil(end);
        return times;
    }

    void PutPicture(const std::filesystem::path& file, const FrameBuffer& frame) {
        ui.folders.files[file] =
            std::get<std::vector<std::uint8_t>>(ui.pictures.Encode(FrameToPicture(frame), "image/png"));
    }
    /// An even picture is what the import command finds.
    void OfferEvenPicture(int grey) {
        FramePainter painter;
        painter.Fill({grey, grey, grey});
        PutPicture("/pictures/even.png", painter.frame);
        ui.chooser.choice = "/pictures/even.png";
    }

    Texts Images() const {
        Texts names;
        for (const auto& [path, bytes] : ui.folders.files)
            if (path.extension() == ".jpg")
                names.push_back(path.lexically_relative(ui.folders.desktop).string());
        return names;
    }
    Texts Information() const { return ui.dialogs.TextsOf(panel::information); }
    bool HasCall(const std::string& call) const {
        return std::find(ui.calls.begin(), ui.calls.end(), call) != ui.calls.end();
    }
    std::string PanelText(int controlId) {
        return ui.dialogs.ItemText(globals->windows.controlPanel, controlId, 100);
    }
    std::string Config() const { return ui.folders.Text(globals->folders.settings); }

    FakeUserInterface ui;
    AbsentCameras cameras;
    AbsentSerialPorts serial;
    CameraRuntime* cameraRuntime = &cameras; // these two RunUntil gives to the program
    SerialPorts* serialPorts = &serial;
    std::unique_ptr<Globals> globals = std::make_unique<Globals>(ui.folders);

private:
    std::vector<std::function<void()>> m_looks;
};

} // namespace tessaro
