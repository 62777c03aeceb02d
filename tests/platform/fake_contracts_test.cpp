#include "platform/fake/scripted_camera.h"
#include "tests/platform/camera_device_contract.h"
#include "tests/platform/dialogs_contract.h"
#include "tests/platform/fake_machine.h"
#include "tests/platform/folders_contract.h"
#include "tests/platform/message_loop_contract.h"
#include "tests/platform/window_drawing_contract.h"
#include "tests/platform/window_system_contract.h"

// The fakes keep the same promises as the real adapters, so that tests with them mean something.

namespace tessaro {
namespace {

struct FakeFoldersMachine {
    FakeFoldersMachine() { folders.folders.insert(Base()); }

    static std::filesystem::path Base() { return "/base"; }
    void FillDisk() { folders.failWriting = true; }

    MemoryFolders folders;
};

struct ScriptedCameraMachine {
    ScriptedCameraMachine() {
        m_camera.features["PixelFormat"] = {ScriptedFeature::Enumeration{"Mono8", {"Mono8", "BayerRG8"}}};
        m_camera.features["Gain"] = {0.0};
        m_camera.features["ExposureTime"] = {10'000.0};
        m_camera.features["Width"] = {ScriptedFeature::Integer{width, {8, width}}};
        m_camera.features["Height"] = {ScriptedFeature::Integer{height, {8, height}}};
    }

    CameraRuntime& Runtime() { return m_camera; }

    void ExpectImages(int count) {
        for (int image = 0; image < count; ++image)
            m_camera.ThenImage(width, height, ScriptedCamera::Samples(width * height, ++m_level));
    }

    /// As often as the suite asks.
    void FallSilent() {
        for (int wait = 0; wait < 3; ++wait)
            m_camera.ThenNothing();
    }

    void Disappear() { m_camera.gone = true; }

private:
    static constexpr int width = 24;
    static constexpr int height = 16;

    ScriptedCamera m_camera{[](const std::string& breach) { ADD_FAILURE() << breach; }};
    std::uint8_t m_level = 0;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, MessageLoopContract, FakeMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, WindowSystemContract, FakeMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, DialogsContract, FakeMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, WindowDrawingContract, FakeMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, FoldersContract, FakeFoldersMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Scripted, CameraDeviceContract, ScriptedCameraMachine);

} // namespace tessaro
