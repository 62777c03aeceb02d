#include "platform/fake/scripted_camera.h"

#include <gtest/gtest.h>

#include <optional>

namespace tessaro {
namespace {

using Texts = std::vector<std::string>;

/// A scripted camera whose breaches are collected.
class ScriptedCameraTest : public testing::Test {
protected:
    void Open() {
        device = script->CreateFirstDevice();
        device->Open();
    }

    void End() {
        device.reset();
        script.reset();
    }

    Texts breaches;
    std::optional<ScriptedCamera> script{std::in_place,
                                         [this](const std::string& breach) { breaches.push_back(breach); }};
    std::unique_ptr<CameraDevice> device;
};

TEST_F(ScriptedCameraTest, IsContentWithAFinishedScript) {
    Open();
    script->ThenImage(2, 1, {3, 4});
    script->FailAt("StartGrabbing 2");
    EXPECT_THROW(device->StartGrabbing(2), CameraError);
    device->StartGrabbing(2);
    EXPECT_EQ(device->RetrieveResult(waitWithoutLimit).GetBuffer()[1], 4);
    End();
    EXPECT_EQ(breaches, Texts{});
}

TEST_F(ScriptedCameraTest, MindsStepsThatAreLeft) {
    script->ThenBrokenImage();
    script->ThenNothing();
    End();
    EXPECT_EQ(breaches, Texts{"2 steps of the camera's script are left"});
}

TEST_F(ScriptedCameraTest, MindsFaultsThatDidNotHappen) {
    script->FailAt("Open");
    End();
    EXPECT_EQ(breaches, Texts{"never called: Open"});
}

TEST_F(ScriptedCameraTest, MindsImagesThatTheScriptDoesNotKnow) {
    Open();
    EXPECT_THROW(device->GrabOne(1), CameraError);
    EXPECT_EQ(breaches, Texts{"an image that the script does not know"});
}

TEST_F(ScriptedCameraTest, MindsWaitsThatNeverEnd) {
    Open();
    script->ThenNothing();
    device->StartGrabbing(1);
    EXPECT_THROW(device->RetrieveResult(waitWithoutLimit), CameraError);
    EXPECT_EQ(breaches, Texts{"a wait that never ends"});
}

TEST_F(ScriptedCameraTest, MindsMoreImagesThanBuffers) {
    Open();
    script->ThenBrokenImage();
    script->ThenBrokenImage();
    device->SetMaxNumBuffer(1);
    device->StartGrabbing(2);
    const GrabResult first = device->RetrieveResult(1);
    const GrabResult second = device->RetrieveResult(1);
    EXPECT_EQ(breaches, Texts{"more images are held than the camera has buffers"});
}

TEST_F(ScriptedCameraTest, SpoilsWhatWasHandedBack) {
    Open();
    script->ThenImage(1, 1, {7});
    GrabResult result = device->GrabOne(1);
    const std::uint8_t* sample = result.GetBuffer().data();
    EXPECT_EQ(*sample, 7);
    result = GrabResult();
    EXPECT_EQ(*sample, ScriptedCamera::released);
    EXPECT_EQ(script->held, 0);
}

TEST_F(ScriptedCameraTest, RemembersWhatItWasTold) {
    script->features["Gain"] = {1.0};
    Open();
    device->SetFloat("Gain", 2.5);
    EXPECT_EQ(script->calls, (Texts{"CreateFirstDevice", "Open", "Set Gain 2.500000"}));
}

} // namespace
} // namespace tessaro
