#include "platform/aravis/aravis_cameras.h"
#include "support/background_program.h"
#include "tests/platform/served_camera.h"
#include "tests/platform/served_images.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>

namespace tessaro {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Generous, since machines may be busy; the library would wait for much longer.
constexpr milliseconds soon(4'000);
constexpr milliseconds atOnce(1'000);

std::unique_ptr<CameraDevice> FindCamera() {
    return AravisCameras(ServedCamera::address).CreateFirstDevice();
}

/// The text of the CameraError that `call` throws; empty when it throws none.
template<typename Call>
std::string ErrorOf(Call call) {
    try {
        call();
    } catch (const CameraError& error) {
        return error.what();
    }
    return {};
}

template<typename Call>
auto DurationOf(Call call) {
    const auto begin = steady_clock::now();
    call();
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - begin);
}

class AravisFaults : public testing::Test {
protected:
    AravisFaults() : m_device(FindCamera()) { m_device->Open(); }

    GrabResult Grab() {
        m_device->StartGrabbing(1);
        return m_device->RetrieveResult(timeoutMs);
    }

    template<typename Call>
    void ExpectErrorSoon(Call call) {
        std::string text;
        const auto duration = DurationOf([&] { text = ErrorOf(call); });
        EXPECT_NE(text, "");
        EXPECT_LE(duration, soon);
    }

    void ExpectThatEverythingFailsAtOnce() {
        const auto duration = DurationOf([&] {
            EXPECT_FALSE(m_device->IsOpen());
            EXPECT_FALSE(m_device->IsGrabbing());
            EXPECT_THROW(m_device->IsReadable("Width"), CameraError);
            EXPECT_THROW(m_device->GetInteger("Width"), CameraError);
            EXPECT_THROW(m_device->SetMaxNumBuffer(1), CameraError);
            EXPECT_THROW(m_device->StartGrabbing(1), CameraError);
            EXPECT_THROW(m_device->RetrieveResult(waitWithoutLimit), CameraError);
            EXPECT_THROW(m_device->GrabOne(timeoutMs), CameraError);
        });
        EXPECT_LE(duration, atOnce);
    }

    void ExpectThatItWorksAgainPluggedIn() {
        m_served.PlugIn();
        m_device->Open();
        EXPECT_TRUE(m_device->IsOpen());
        EXPECT_TRUE(Grab().GrabSucceeded());
    }

    ServedCamera m_served;
    std::unique_ptr<CameraDevice> m_device;
};

TEST(AravisWithoutCamera, FailsSoon) {
    std::string text;
    const auto duration = DurationOf([&] { text = ErrorOf([] { FindCamera(); }); });
    EXPECT_EQ(text, "Can't connect to device at address '127.0.0.1'");
    EXPECT_LE(duration, soon);
}

TEST_F(AravisFaults, ACameraThatIsGoneBetweenGrabsIsAnErrorSoon) {
    EXPECT_TRUE(Grab().GrabSucceeded());
    m_served.Unplug();
    ExpectErrorSoon([&] { Grab(); });
    ExpectThatEverythingFailsAtOnce();
    ExpectErrorSoon([&] { m_device->Open(); });
    ExpectThatEverythingFailsAtOnce();
    ExpectThatItWorksAgainPluggedIn();
}

TEST_F(AravisFaults, ACameraThatIsGoneIsAnErrorOfEveryKindOfCall) {
    m_served.Unplug();
    ExpectErrorSoon([&] { m_device->GetInteger("Width"); });
    ExpectThatEverythingFailsAtOnce();
}

TEST_F(AravisFaults, ACameraThatHangsIsNotTakenForOneWithoutTheFeature) {
    m_device->StartGrabbing(1);
    m_served.Tell("wait 5"); // the first of them was sent
    m_served.Freeze();
    EXPECT_TRUE(m_device->RetrieveResult(timeoutMs).GrabSucceeded());
    ExpectErrorSoon([&] { m_device->IsReadable("Gain"); }); // the camera is still being stopped
    ExpectThatEverythingFailsAtOnce();
}

class AravisExposureFaults : public AravisFaults, public testing::WithParamInterface<int> {};

TEST_P(AravisExposureFaults, ACameraThatIsGoneDuringAGrabIsAnErrorSoon) {
    m_device->StartGrabbing(100);
    for (int image = 0; image < GetParam(); ++image)
        EXPECT_TRUE(m_device->RetrieveResult(timeoutMs).GrabSucceeded());
    m_served.Unplug();
    ExpectErrorSoon([&] {
        while (true) { // what arrived before may still be fetched
            const GrabResult result = m_device->RetrieveResult(waitWithoutLimit);
            EXPECT_TRUE(!result.GrabSucceeded() || IsAll(result, 1));
        }
    });
    ExpectThatEverythingFailsAtOnce();
    ExpectThatItWorksAgainPluggedIn();
}

INSTANTIATE_TEST_SUITE_P(Before, AravisExposureFaults, testing::Values(0, 1, 2, 3));

TEST_F(AravisFaults, ACameraThatHangsIsAnErrorSoonAndWorksAgainAfterwards) {
    m_device->StartGrabbing(1000);
    EXPECT_TRUE(m_device->RetrieveResult(timeoutMs).GrabSucceeded());
    m_served.Freeze();
    ExpectErrorSoon([&] {
        while (true)
            m_device->RetrieveResult(waitWithoutLimit);
    });
    ExpectThatEverythingFailsAtOnce();
    m_served.Thaw();
    // It is under the control of the connection that was given up until that is torn down.
    EXPECT_TRUE(Eventually([&] { return ErrorOf([&] { m_device->Open(); }).empty(); }));
    EXPECT_TRUE(Grab().GrabSucceeded());
}

TEST_F(AravisFaults, ACameraThatWasSwitchedOffAndOnIsNoticed) {
    m_device->StartGrabbing(1000);
    m_served.Unplug();
    m_served.PlugIn();
    ExpectErrorSoon([&] {
        while (true)
            m_device->RetrieveResult(waitWithoutLimit);
    });
    m_device->Open();
    EXPECT_TRUE(Grab().GrabSucceeded());
}

TEST_F(AravisFaults, ACameraThatWasSwitchedOffAndOnBetweenGrabsIsNoticed) {
    EXPECT_TRUE(Grab().GrabSucceeded());
    m_served.Unplug();
    m_served.PlugIn();
    ExpectErrorSoon([&] { Grab(); });
    m_device->Open();
    EXPECT_TRUE(Grab().GrabSucceeded());
}

TEST_F(AravisFaults, ImagesThatAreHeldOutliveTheCamera) {
    const GrabResult held = Grab();
    m_served.Unplug();
    ExpectErrorSoon([&] { Grab(); });
    EXPECT_TRUE(IsAll(held, 1));
    ExpectThatItWorksAgainPluggedIn();
    EXPECT_TRUE(IsAll(held, 1));
}

TEST_F(AravisFaults, ACameraThatIsGoneAtTheEndKeepsNobodyWaiting) {
    m_device->StartGrabbing(10);
    m_served.Unplug();
    EXPECT_LE(DurationOf([&] { m_device.reset(); }), soon);
}

TEST(AravisAtExit, ACameraThatIsGoneDoesNotKeepTheProgramFromItsEnd) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto begin = steady_clock::now();
    EXPECT_EXIT(
        {
            ServedCamera served;
            const auto device = FindCamera();
            device->Open();
            device->StartGrabbing(10);
            served.Unplug();
            ErrorOf([&] { device->GetInteger("Width"); });
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_LE(steady_clock::now() - begin, 2 * soon);
}

TEST_F(AravisFaults, AnImageWithPacketsMissingIsNoPicture) {
    m_served.Tell("lost 0.05");
    int failed = 0;
    for (int grab = 0; grab < 40; ++grab) {
        const GrabResult result = Grab();
        failed += result.GrabSucceeded() ? 0 : 1;
        EXPECT_TRUE(result.GrabSucceeded() ? IsAll(result, 1) : result.GetBuffer().empty());
    }
    EXPECT_GT(failed, 0);
    m_served.Tell("lost 0");
    EXPECT_TRUE(Eventually([&] { return Grab().GrabSucceeded(); }));
}

TEST_F(AravisFaults, AnImageOfAnotherSizeIsAnError) {
    m_device->StartGrabbing(1000);
    m_served.Tell("size 160 120");
    const std::string text = ErrorOf([&] {
        while (true)
            m_device->RetrieveResult(timeoutMs);
    });
    EXPECT_EQ(text, "The camera sent an image of 160 x 120 pixels instead of 320 x 240");
    EXPECT_TRUE(m_device->IsOpen());
    EXPECT_FALSE(m_device->IsGrabbing());
    m_device->Open();
    EXPECT_TRUE(Eventually([&] { return ErrorOf([&] { Grab(); }).empty(); })) << "one may be under way still";
    const GrabResult whole = Grab();
    EXPECT_EQ(whole.GetWidth(), 320);
    EXPECT_EQ(whole.GetHeight(), 240);
}

TEST_F(AravisFaults, OpeningAnewEndsAGrabAndSelectsTheWholeSensor) {
    m_device->SetInteger("Height", 120);
    m_device->StartGrabbing(1000);
    EXPECT_EQ(m_device->RetrieveResult(timeoutMs).GetHeight(), 120);
    m_device->Open();
    EXPECT_FALSE(m_device->IsGrabbing());
    EXPECT_EQ(Grab().GetHeight(), 240);
}

TEST_F(AravisFaults, ACameraThatAnotherProgramUsesIsAnErrorSoon) {
    const auto other = FindCamera();
    std::string text;
    const auto duration = DurationOf([&] { text = ErrorOf([&] { other->Open(); }); });
    EXPECT_EQ(text, "The camera is controlled by another program");
    EXPECT_LE(duration, soon);
    EXPECT_TRUE(Grab().GrabSucceeded()) << "the first goes on";
    m_device.reset();
    other->Open();
    EXPECT_TRUE(other->IsOpen());
}

TEST_F(AravisFaults, ASilentCameraIsWaitedForAsLongAsItAnswers) {
    m_served.Tell("silent 1");
    m_device->StartGrabbing(1);
    EXPECT_EQ(ErrorOf([&] { m_device->RetrieveResult(3'000); }), "No image came in time");
    EXPECT_TRUE(m_device->IsOpen());
    m_served.Tell("silent 0");
    EXPECT_TRUE(m_device->RetrieveResult(timeoutMs).GrabSucceeded());
}

} // namespace
} // namespace tessaro
