#include "support/arv_client.h"
#include "support/program.h"
#include "support/running_twin.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace tessaro {
namespace {

using Options = std::vector<std::string>;

const Options smallWafer = {"--wafer-mm", "1", "--at", "500,500,0"};

ProgramRun ArvTool(const std::vector<std::string>& features) {
    Options arguments = {"-a", "127.0.0.1", "control"};
    arguments.insert(arguments.end(), features.begin(), features.end());
    return RunProgram("arv-tool-0.8", arguments);
}

TEST(TwinProgram, PrintsALineForEachDeviceWhenAllAreReady) {
    const RunningTwin twin(TESSARO_TWIN, smallWafer);
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const std::string output = twin.Output();
    EXPECT_TRUE(output.starts_with("tessaro-twin: stage is ready at /dev/pts/")) << output;
    EXPECT_TRUE(output.ends_with("\ntessaro-twin: camera TWIN01 is ready at 127.0.0.1\n")) << output;
    EXPECT_EQ(twin.Errors(), "");
}

TEST(TwinProgram, EndsCleanlyOnATerminationSignal) {
    for (const int signal : {SIGTERM, SIGINT}) {
        RunningTwin twin(TESSARO_TWIN, smallWafer);
        ASSERT_TRUE(twin.IsReady()) << twin.Errors();
        twin.Signal(signal);
        EXPECT_EQ(twin.ExitStatus(), 0);
        EXPECT_FALSE(std::filesystem::exists(twin.ControlPath()));
    }
}

TEST(TwinProgram, EndsCleanlyWhileItSendsFrames) {
    RunningTwin twin(TESSARO_TWIN, smallWafer);
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    ArvClient client("127.0.0.1");
    client.Start();
    ASSERT_TRUE(client.Next().complete);
    twin.Signal(SIGTERM);
    EXPECT_EQ(twin.ExitStatus(), 0);
}

TEST(TwinProgram, QuitsWhenItsControlSocketIsToldTo) {
    RunningTwin twin(TESSARO_TWIN, smallWafer);
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    EXPECT_EQ(twin.Say("quit"), "ok");
    EXPECT_EQ(twin.ExitStatus(), 0);
}

TEST(TwinProgram, SaysOnItsControlSocketWhatItDoesNotUnderstand) {
    RunningTwin twin(TESSARO_TWIN, smallWafer);
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    EXPECT_EQ(twin.Say("jump"), "error: there is no command 'jump', only move, where, fault, clear and quit");
    EXPECT_EQ(twin.Say("move 1,2"), "error: '1,2' is no position X,Y,Z");
    EXPECT_NE(twin.Errors().find("jump"), std::string::npos) << "told to who watches it, too";
}

TEST(TwinProgram, IsSilentAboutCommandsWhenQuiet) {
    Options options = smallWafer;
    options.push_back("--quiet");
    RunningTwin twin(TESSARO_TWIN, options);
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    EXPECT_EQ(twin.Say("move 1,2,3"), "ok");
    EXPECT_EQ(twin.Errors(), "");
}

TEST(TwinProgram, ToolsOfOthersReadAndSetItsFeatures) {
    Options options = smallWafer;
    options.insert(options.end(), {"--serial-number", "LAB7"});
    const RunningTwin twin(TESSARO_TWIN, options);
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const ProgramRun run =
        ArvTool({"DeviceID", "SensorWidth", "PixelFormat", "Gain=3", "Gain", "ExposureAuto=Continuous",
                 "ExposureAuto", "AutoFunctionROISelector=ROI2", "AutoFunctionROIUseBrightness"});
    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    for (const char* line : {"DeviceID = LAB7", "SensorWidth = 2464", "PixelFormat = BayerRG8", "Gain = 3 dB",
                             "ExposureAuto = Continuous", "AutoFunctionROIUseBrightness = false"})
        EXPECT_NE(run.output.find(line), std::string::npos) << line << " in " << run.output;
}

TEST(TwinProgram, ClientsOfOthersGrabItsWafer) {
    const RunningTwin twin(TESSARO_TWIN, smallWafer);
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    ArvClient client("127.0.0.1");
    ASSERT_TRUE(client.IsOpen()) << client.Error();
    client.Start();
    const ReceivedFrame frame = client.Next();
    ASSERT_TRUE(frame.complete);
    EXPECT_EQ(frame.width, 2464);
    EXPECT_EQ(frame.height, 2056);
    double sum = 0.0;
    for (const std::uint8_t sample : frame.bytes)
        sum += sample;
    EXPECT_NEAR(sum / static_cast<double>(frame.bytes.size()), 130.0, 9.0)
        << "substrate of about 140, less at the corners and where something lies";
}

TEST(TwinProgram, CameraSeesTheStageMove) {
    RunningTwin twin(TESSARO_TWIN, smallWafer);
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    ArvClient client("127.0.0.1");
    client.Start();
    ASSERT_TRUE(client.Next().complete);
    EXPECT_EQ(twin.Say("move -5000,-5000,0"), "ok");
    EXPECT_TRUE(Eventually([&] {
        const ReceivedFrame frame = client.Next();
        return frame.complete && frame.bytes[frame.bytes.size() / 2] < 60;
    })) << "beside the wafer there is only its dark holder";
}

TEST(TwinProgram, HasAFaultFromTheStartUntilItIsCleared) {
    Options options = smallWafer;
    options.insert(options.end(), {"--fault", "camera-gone"});
    RunningTwin twin(TESSARO_TWIN, options);
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    EXPECT_FALSE(ArvClient("127.0.0.1").IsOpen());
    EXPECT_EQ(twin.Say("clear camera-gone"), "ok");
    EXPECT_TRUE(ArvClient("127.0.0.1").IsOpen());
    EXPECT_EQ(twin.Say("fault camera-gone"), "ok");
    EXPECT_FALSE(ArvClient("127.0.0.1").IsOpen());
}

TEST(TwinProgram, EndsOnATerminationSignalWhileAClientNeverFetchesItsAnswers) {
    RunningTwin twin(TESSARO_TWIN, smallWafer);
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    LocalClient client(twin.ControlPath());
    const std::string lines = "move 1,2,3\nmove 1,2,3\nmove 1,2,3\nmove 1,2,3\n";
    while (client.Send(lines))
        ;
    twin.Signal(SIGTERM);
    EXPECT_EQ(twin.ExitStatus(), 0);
}

TEST(TwinProgram, SaysWhyItCannotServe) {
    const RunningTwin first(TESSARO_TWIN, smallWafer);
    ASSERT_TRUE(first.IsReady()) << first.Errors();
    const ProgramRun second = RunProgram(TESSARO_TWIN, smallWafer);
    EXPECT_EQ(second.exitStatus, 1);
    EXPECT_EQ(second.errors,
              "tessaro-twin: cannot serve a camera at 127.0.0.1: no address of this machine, or taken\n");
    EXPECT_EQ(second.output, "");
}

TEST(TwinProgram, RefusesFaultsThatThereAreNot) {
    const ProgramRun run = RunProgram(TESSARO_TWIN, {"--fault", "fire"});
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_NE(run.errors.find("there is no fault 'fire'"), std::string::npos) << run.errors;
}

} // namespace
} // namespace tessaro
