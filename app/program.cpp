#include "app/program.h"

#include "app/main_window.h"
#include "app/program_operations.h"
#include "app/resource_ids.h"
#include "app/services.h"
#include "app/settings_file.h"
#include "camera/camera_session.h"

#include <new>

namespace tessaro {
namespace {

constexpr const char* mainClass = "Tessaro";
constexpr const char* popupClass = "popup_controller";
constexpr std::uint32_t waitAfterStageMs = 100;

class Program {
public:
    Program(Globals& globals, const UserInterface& ui, const Devices& devices, const Listeners& listeners,
            UnattendedScanRun* unattended)
        : m_globals(globals), m_unattended(unattended), m_services(globals, ui, devices, listeners),
          m_operations(m_services), m_mainWindow(m_operations, globals.mainWindow) {}

    int Run() {
        if (m_unattended != nullptr)
            m_unattended->SetUp(m_globals);
        RegisterWindowClasses();
        AllocateGrainTables();
        if (!CreateWindows())
            return 0;
        m_services.screen.SetUp();
        m_services.ui.windows.LoadAccelerators(resource::accelerators);
        ReadSettings();
        OpenStage();
        m_services.pump.PumpMessages(waitAfterStageMs);
        m_services.camera.InitializeCamera();
        m_services.camera.ControlCamera(camera_mode::openAndAdjust);
        if (m_unattended != nullptr)
            m_unattended->ScanAndClose(m_services);
        DispatchMessages();
        WriteSettings();
        LetGoOfCamera();
        ReleaseGrainTables();
        return m_services.ui.messages.ExitCode();
    }

private:
    void RegisterWindowClasses() {
        WindowSystem& windows = m_services.ui.windows;
        windows.RegisterWindowClass({mainClass, &m_mainWindow, resource::mainMenu, resource::icon});
        const WindowClass popup{popupClass, &m_services.motorController, 0, resource::icon};
        windows.RegisterWindowClass(popup);
        windows.RegisterWindowClass(popup); // refused, without harm
    }

    void AllocateGrainTables() {
        m_globals.grainTable.reset(new (std::nothrow) GrainTable());
        m_globals.spareGrainTable.reset(new (std::nothrow) GrainTable());
    }

    /// The popup is not needed to go on.
    bool CreateWindows() {
        WindowSystem& windows = m_services.ui.windows;
        ProgramWindows& handles = m_globals.windows;
        handles.main =
            windows.MakeWindow({mainClass, "Tessaro Searching", WindowStyle::Overlapped, 0, 0, 1242, 1108});
        if (handles.main == WindowHandle::None)
            return false;
        windows.Show(handles.main);
        windows.Update(handles.main);
        handles.motorController = windows.MakeWindow(
            {popupClass, "Motor Controller", WindowStyle::ToolPopup, 900, 700, 400, 400, handles.main});
        if (handles.motorController == WindowHandle::None)
            return true;
        windows.Show(handles.motorController);
        windows.Update(handles.motorController);
        return true;
    }

    void ReadSettings() {
        m_globals.settings.portNumber = m_globals.stage.portNumber;
        ReadSettingsFile(m_services.ui.folders, m_globals.folders.settings, m_globals.settings);
        m_globals.stage.portNumber = m_globals.settings.portNumber;
        m_services.controlPanel
            .ShowRanges(); // it was opened before they were known; what it shows wins later
        if (m_unattended != nullptr)
            m_unattended->TakeRanges(m_services);
    }

    void OpenStage() { m_globals.stage.Open(m_globals.windows.main); }

    void DispatchMessages() {
        Message message;
        while (m_services.ui.messages.WaitMessage(message))
            m_services.ui.messages.Dispatch(message);
    }

    void WriteSettings() {
        if (m_unattended != nullptr)
            m_unattended->GiveRangesBack(m_globals.settings);
        m_globals.settings.portNumber = m_globals.stage.portNumber;
        WriteSettingsFile(m_services.ui.folders, m_globals.folders.settings, m_globals.settings);
    }

    /// The camera's library must still be there when the camera is taken down: the globals go too late.
    void LetGoOfCamera() {
        CameraSession& session = m_globals.camera;
        session.present = 0;
        session.grabResult = GrabResult(); // before the camera that it came from
        session.camera.reset();
    }

    void ReleaseGrainTables() {
        m_globals.grainTable.reset();
        m_globals.spareGrainTable.reset();
    }

    Globals& m_globals;
    UnattendedScanRun* m_unattended; // null: an operator is there
    Services m_services;
    ProgramOperations m_operations;
    MainWindow m_mainWindow;
};

} // namespace

int RunProgram(Globals& globals, const UserInterface& ui, const Devices& devices, const Listeners& listeners,
               UnattendedScanRun* unattended) {
    return Program(globals, ui, devices, listeners, unattended).Run();
}

} // namespace tessaro
