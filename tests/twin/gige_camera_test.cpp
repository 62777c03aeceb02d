#include "support/arv_client.h"
#include "support/background_program.h"
#include "twin/camera/camera_registers.h"
#include "twin/camera/gige_camera.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace tessaro {
namespace {

namespace reg = camera_register;
using namespace std::string_literals;

constexpr const char* address = "127.0.0.1";

/// A camera that looks at an even surface, `level` at 10 ms without gain, and a plain client of the library.
class GigECameraTest : public testing::Test {
protected:
    void SetUp() override {
        camera = std::make_unique<GigECamera>(
            address, "TEST01",
            [this](const ExposureSettings& exposure, std::uint64_t, std::span<std::uint8_t> mosaic) {
                const double signal =
                    level * exposure.exposureTimeUs / 10'000.0 * std::pow(10.0, exposure.gainDb / 20.0);
                std::fill(mosaic.begin(), mosaic.end(), static_cast<std::uint8_t>(std::min(signal, 255.0)));
                mosaic[0] = 1; // red, in the upper left corner
                mosaic[1] = 2;
                ++frames;
            });
        client = std::make_unique<ArvClient>(address);
        ASSERT_TRUE(client->IsOpen()) << client->Error();
    }
    void TearDown() override {
        client.reset();
        camera.reset();
    }

    std::atomic<double> level = 100.0;
    std::atomic<int> frames = 0;
    std::unique_ptr<GigECamera> camera;
    std::unique_ptr<ArvClient> client;
};

TEST_F(GigECameraTest, TellsWhatItIs) {
    EXPECT_EQ(client->GetText("DeviceVendorName"), "Tessaro");
    EXPECT_EQ(client->GetText("DeviceModelName"), "Twin");
    EXPECT_EQ(client->GetText("DeviceID"), "TEST01");
    EXPECT_EQ(client->GetInteger("SensorWidth"), 2464);
    EXPECT_EQ(client->GetInteger("SensorHeight"), 2056);
    EXPECT_EQ(client->GetInteger("PayloadSize"), 5'065'984);
}

TEST_F(GigECameraTest, StartsWithTheWholeSensorInBayerAndEverythingManual) {
    EXPECT_EQ(client->GetText("PixelFormat"), "BayerRG8");
    EXPECT_EQ(client->GetInteger("Width"), 2464);
    EXPECT_EQ(client->GetInteger("Height"), 2056);
    EXPECT_EQ(client->GetText("GainAuto"), "Off");
    EXPECT_EQ(client->GetText("ExposureAuto"), "Off");
    EXPECT_EQ(client->GetText("BalanceWhiteAuto"), "Off");
    EXPECT_EQ(client->GetFloat("ExposureTime"), 10'000.0);
    EXPECT_EQ(client->GetFloat("Gain"), 0.0);
}

TEST_F(GigECameraTest, KeepsABalanceRatioForEachChannel) {
    client->SetText("BalanceRatioSelector", "Blue");
    client->SetFloat("BalanceRatio", 1.5);
    client->SetText("BalanceRatioSelector", "Red");
    EXPECT_EQ(client->GetFloat("BalanceRatio"), 1.0);
    client->SetText("BalanceRatioSelector", "Blue");
    EXPECT_EQ(client->GetFloat("BalanceRatio"), 1.5);
    EXPECT_EQ(client->Error(), "");
}

TEST_F(GigECameraTest, KeepsTwoRegionsForTheAutomaticFunctions) {
    EXPECT_EQ(client->GetBoolean("AutoFunctionROIUseBrightness"), true);
    client->SetInteger("AutoFunctionROIWidth", 1000);
    client->SetText("AutoFunctionROISelector", "ROI2");
    EXPECT_EQ(client->GetBoolean("AutoFunctionROIUseBrightness"), false);
    EXPECT_EQ(client->GetInteger("AutoFunctionROIWidth"), 2464);
}

TEST_F(GigECameraTest, SendsWholeFramesFromTheUpperLeftCornerOn) {
    client->Start();
    const ReceivedFrame frame = client->Next();
    ASSERT_TRUE(frame.complete);
    EXPECT_EQ(frame.width, 2464);
    EXPECT_EQ(frame.height, 2056);
    ASSERT_EQ(frame.bytes.size(), twinMosaicBytes);
    EXPECT_EQ(frame.bytes[0], 1);
    EXPECT_EQ(frame.bytes[1], 2);
    EXPECT_EQ(frame.bytes[2464], 100);
    EXPECT_EQ(frame.bytes.back(), 100);
}

TEST_F(GigECameraTest, LatchesAClockBetweenTheFramesBeforeAndAfter) {
    client->Start();
    const ReceivedFrame before = client->Next();
    client->Execute("TimestampLatch");
    const auto latched = static_cast<std::uint64_t>(client->GetInteger("TimestampLatchValue"));
    EXPECT_GT(latched, before.timestampNs);
    const int begun = frames; // one of them may have been begun, and is older than the latch then
    ReceivedFrame after = client->Next();
    while (after.complete && frames < begun + 20 && after.timestampNs <= latched)
        after = client->Next();
    EXPECT_GT(after.timestampNs, latched);
}

TEST_F(GigECameraTest, StopsByItselfAfterASingleFrame) {
    client->SetText("AcquisitionMode", "SingleFrame");
    client->Start();
    EXPECT_TRUE(client->Next().complete);
    EXPECT_EQ(client->ReadRegister(reg::acquisition), 0U);
    EXPECT_EQ(client->ReadRegister(reg::acquisition), 0U) << "the server has been round its loop meanwhile";
    EXPECT_EQ(frames, 1);
}

TEST_F(GigECameraTest, SendsAPartOfTheSensorInOtherFormats) {
    client->SetInteger("Width", 16);
    client->SetInteger("Height", 16);
    client->SetText("PixelFormat", "RGB8");
    client->Start();
    const ReceivedFrame frame = client->Next();
    ASSERT_TRUE(frame.complete);
    ASSERT_EQ(frame.bytes.size(), 16U * 16U * 3U);
    EXPECT_EQ(frame.bytes[0], 1);   // red
    EXPECT_EQ(frame.bytes[1], 51);  // (2 + 100) / 2
    EXPECT_EQ(frame.bytes[2], 100); // blue
}

TEST_F(GigECameraTest, ExposureOnceGoesBackToOffAtTheTargetBrightness) {
    client->SetFloat("AutoTargetBrightness", 0.3);
    client->SetText("ExposureAuto", "Once");
    client->Start();
    int taken = 0;
    while (client->GetText("ExposureAuto") == "Once" && ++taken < 20)
        client->Next();
    EXPECT_LT(taken, 10);
    EXPECT_NEAR(client->GetFloat("ExposureTime"), 14'750.0, 300.0);
}

TEST_F(GigECameraTest, EndlessFaultKeepsOnceFromGoingBackToOff) {
    camera->SetEndlessAutomatic(true);
    client->SetText("GainAuto", "Once");
    client->Start();
    for (int frame = 0; frame < 10; ++frame)
        client->Next();
    EXPECT_EQ(client->GetText("GainAuto"), "Once");
    camera->SetEndlessAutomatic(false);
    EXPECT_TRUE(Eventually([&] { return client->Next().complete && client->GetText("GainAuto") == "Off"; }));
}

TEST_F(GigECameraTest, LosesPackets) {
    camera->SetLostPackets(0.2);
    client->Start();
    EXPECT_TRUE(Eventually([&] {
        const ReceivedFrame frame = client->Next();
        return frame.received && !frame.complete;
    }));
    camera->SetLostPackets(0.0);
    EXPECT_TRUE(Eventually([&] { return client->Next().complete; }));
}

/// Sets what the camera had when it was switched on and takes a frame.
void ExpectWholeFrames(ArvClient& client, const std::string& after) {
    client.Stop();
    client.SetInteger("OffsetX", 0);
    client.SetInteger("OffsetY", 0);
    client.SetInteger("Width", 2464);
    client.SetInteger("Height", 2056);
    client.SetText("PixelFormat", "BayerRG8");
    client.WriteRegister(reg::framePeriodUs, 25'000);
    client.WriteRegister(reg::streamPacketSize, 65'000); // streams count on what they read at their start
    EXPECT_EQ(client.Error(), "") << after;
    client.Start();
    EXPECT_TRUE(Eventually([&] { // what the nonsense made it send may still be under way
        const ReceivedFrame frame = client.Next();
        return frame.complete && frame.bytes.size() == twinMosaicBytes && frame.bytes[2464] == 100;
    })) << after;
    client.Stop();
}

struct RegisterWrite {
    std::uint32_t address = 0;
    std::uint32_t value = 0;
};
struct Nonsense {
    const char* name;
    std::vector<RegisterWrite> writes;
};
const Nonsense everyNonsense[] = {
    {"no format", {{reg::pixelFormat, 0}}},
    {"a format of half bytes", {{reg::pixelFormat, 0x01040037}}},
    {"a format of bits", {{reg::pixelFormat, 0x01010037}}},
    {"another format of bits", {{reg::pixelFormat, 0x01010001}}},
    {"a wide format", {{reg::pixelFormat, 0x01ff0001}}},
    {"a size whose product is 0", {{reg::width, 65'536}, {reg::height, 65'536}}},
    {"a large size", {{reg::width, 40'000}, {reg::height, 40'000}}},
    {"a size whose product is small", {{reg::width, 65'536}, {reg::height, 65'537}}},
    {"the largest size", {{reg::width, UINT32_MAX}, {reg::height, UINT32_MAX}}},
    {"a negative width", {{reg::width, 0x80000000}, {reg::height, 2}}},
    {"no size", {{reg::width, 0}, {reg::height, 0}}},
    {"offsets beyond the sensor", {{reg::offsetX, UINT32_MAX}, {reg::offsetY, 2'056}}},
    {"no frame period", {{reg::framePeriodUs, 0}}},
    {"no frame period and a large size",
     {{reg::framePeriodUs, 0}, {reg::width, 4'000}, {reg::height, 4'000}}},
    {"no packets", {{reg::streamPacketSize, 0}}},
    {"packets of headers only", {{reg::streamPacketSize, 36}}},
    {"packets larger than there are", {{reg::streamPacketSize, 0xffff}}},
    {"no packets and a large size", {{reg::streamPacketSize, 0}, {reg::width, 4'000}, {reg::height, 4'000}}},
    {"no such mode", {{reg::acquisitionMode, 77}}}};

TEST_F(GigECameraTest, SurvivesWhateverClientsWriteBeforeTheyStart) {
    for (const Nonsense& nonsense : everyNonsense) {
        for (const RegisterWrite& write : nonsense.writes)
            client->WriteRegister(write.address, write.value);
        client->Start(twinMosaicBytes);
        client->Next(150'000); // longer than the server takes to look
        ExpectWholeFrames(*client, nonsense.name);
    }
}

TEST_F(GigECameraTest, SurvivesWhateverClientsWriteWhileItSends) {
    for (const Nonsense& nonsense : everyNonsense) {
        client->Start();
        EXPECT_TRUE(Eventually([&] { return client->Next().complete; })) << nonsense.name;
        for (const RegisterWrite& write : nonsense.writes)
            client->WriteRegister(write.address, write.value);
        client->Next(100'000);
        ExpectWholeFrames(*client, nonsense.name);
    }
}

TEST_F(GigECameraTest, BringsWhatClientsWroteBackWithinBoundsWithTheNextFrame) {
    const std::string infinite = "\x7f\xf0\0\0\0\0\0\0"s;
    const std::string notANumber = "\x7f\xf8\0\0\0\0\0\0"s;
    client->WriteMemory(reg::gainFloat64, infinite);
    client->WriteMemory(reg::exposureTimeFloat64, notANumber);
    client->WriteMemory(reg::targetBrightnessFloat64, infinite);
    client->WriteMemory(reg::balanceRatioFloat64, notANumber);
    client->WriteMemory(reg::vendorName, std::string(32, 'x'));
    client->WriteRegister(reg::exposureAuto, 9);
    client->WriteRegister(reg::regionOffsetX, 4'000);
    client->WriteRegister(reg::regionWidth, 1'000);
    client->WriteRegister(reg::offsetX, 4'000);
    client->WriteRegister(reg::width, 1'000);
    client->WriteRegister(reg::height, 1);
    client->WriteRegister(reg::sensorWidth, 1);
    client->WriteRegister(reg::framePeriodUs, 1);
    client->Start();
    EXPECT_TRUE(client->Next().received);
    client->Stop();
    EXPECT_EQ(client->GetFloat("Gain"), 24.0);
    EXPECT_EQ(client->GetFloat("ExposureTime"), 20.0);
    EXPECT_EQ(client->GetFloat("AutoTargetBrightness"), 0.9);
    EXPECT_EQ(client->GetFloat("BalanceRatio"), 0.1);
    EXPECT_EQ(client->GetText("DeviceVendorName"), "Tessaro");
    EXPECT_EQ(client->GetText("ExposureAuto"), "Off");
    EXPECT_EQ(client->GetInteger("AutoFunctionROIOffsetX"), 1'464);
    EXPECT_EQ(client->GetInteger("OffsetX"), 1'464);
    EXPECT_EQ(client->GetInteger("Height"), 16);
    EXPECT_EQ(client->GetInteger("SensorWidth"), 2'464);
    EXPECT_EQ(client->GetFloat("AcquisitionFrameRate"), 1'000.0);
}

TEST_F(GigECameraTest, BringsThePacketSizeBackWithinBounds) {
    client->Start();
    EXPECT_TRUE(Eventually([&] { return client->Next().complete; }));
    client->WriteRegister(reg::streamPacketSize, 0);
    EXPECT_TRUE(Eventually([&] { return (client->ReadRegister(reg::streamPacketSize) & 0xffffU) == 576U; }));
}

TEST_F(GigECameraTest, SendsFramesOfAnotherSizeThanClientsHaveSet) {
    client->Start();
    EXPECT_TRUE(Eventually([&] { return client->Next().width == 2464; }));
    camera->SetFrameSize(640, 480);
    EXPECT_TRUE(Eventually([&] { return client->Next().width == 640; }));
    camera->SetFrameSize(1'000'000, 1'000'000);
    EXPECT_TRUE(Eventually([&] { return client->Next().height == 2056; })) << "no larger than the sensor";
}

TEST_F(GigECameraTest, SendsFramesOfTheSizeThatClientsHaveSetAgainOnceThatIsCleared) {
    client->SetInteger("Width", 1200);
    client->SetInteger("Height", 1000);
    camera->SetFrameSize(640, 480);
    client->Start();
    EXPECT_TRUE(Eventually([&] { return client->Next().width == 640; }));
    client->SetInteger("Width", 1100); // is not obeyed, but remembered
    EXPECT_TRUE(Eventually([&] { return client->GetInteger("Width") == 640; }));
    camera->ClearFrameSize();
    EXPECT_TRUE(Eventually([&] { return client->Next().width == 1100; }));
}

TEST_F(GigECameraTest, KeepsItsFaultsOverUnplugging) {
    client.reset();
    camera->Unplug();
    camera->SetFrameSize(640, 480);
    camera->SetLostPackets(1.0);
    camera->PlugIn();
    camera->Unplug();
    camera->PlugIn();
    ArvClient again(address);
    again.Start();
    EXPECT_TRUE(Eventually([&] { return frames > 1; }));
    EXPECT_FALSE(again.Next(100'000).complete);
    camera->SetLostPackets(0.0);
    EXPECT_TRUE(Eventually([&] { return again.Next().width == 640; }));
}

TEST_F(GigECameraTest, NobodyAnswersWhileItIsUnplugged) {
    client.reset();
    camera->Unplug();
    EXPECT_FALSE(ArvClient(address).IsOpen());
    camera->PlugIn();
    EXPECT_TRUE(ArvClient(address).IsOpen());
}

TEST_F(GigECameraTest, PluggedInAgainItIsAsAfterSwitchingItOnButForItsFaults) {
    client->SetFloat("Gain", 6.0);
    camera->SetEndlessAutomatic(true);
    client.reset();
    camera->Unplug();
    camera->PlugIn();
    ArvClient again(address);
    EXPECT_EQ(again.GetFloat("Gain"), 0.0);
    again.SetText("GainAuto", "Once");
    again.Start();
    for (int frame = 0; frame < 10; ++frame)
        again.Next();
    EXPECT_EQ(again.GetText("GainAuto"), "Once");
}

TEST_F(GigECameraTest, RefusesAnAddressThatIsTaken) {
    EXPECT_THROW(GigECamera(address, "TEST02", {}), std::runtime_error);
}

TEST(GigECamera, SaysThatItCannotServeAtAnAddressOfAnotherMachine) {
    try {
        const GigECamera camera("192.0.2.1", "TEST01", {});
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(),
                     "cannot serve a camera at 192.0.2.1: no address of this machine, or taken");
    }
}

} // namespace
} // namespace tessaro
