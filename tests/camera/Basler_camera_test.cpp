#include "camera/Basler_camera.h"
#include "camera/camera_features.h"
#include "platform/fake/virtual_clock.h"
#include "tests/camera/camera_fixture.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tessaro {
namespace {

class AutomaticAdjustment : public testing::Test {
protected:
    AutomaticAdjustment() {
        AddStandardFeatures(scripted);
        device = scripted.CreateFirstDevice();
        device->Open();
        scripted.calls.clear();
    }

    void ThenImages(int count) {
        for (int image = 0; image < count; ++image)
            scripted.ThenImage(2, 2, Samples(4));
    }

    void TurnOff(const std::string& function) {
        std::get<ScriptedFeature::Enumeration>(scripted.features.at(function).value).value = "Off";
    }

    /// The function turns itself off with so many images, when the value is that.
    void TurnOffAfter(int images, const std::string& function, const std::string& value, double found) {
        scripted.onCall = [this, images, function, value, found, taken = 0](const std::string& call) mutable {
            if (call != "GrabOne 5000" || ++taken != images)
                return;
            TurnOff(function);
            scripted.features.at(value).value = found;
        };
    }

    /// Each channel has a ratio of its own.
    void AnswerBalanceRatios(double red, double green, double blue) {
        scripted.onCall = [this, red, green, blue](const std::string& call) {
            double& ratio = std::get<double>(scripted.features.at("BalanceRatio").value);
            if (call == "Set BalanceRatioSelector Red")
                ratio = red;
            else if (call == "Set BalanceRatioSelector Green")
                ratio = green;
            else if (call == "Set BalanceRatioSelector Blue")
                ratio = blue;
        };
    }

    bool Called(const std::string& call) const {
        return std::find(scripted.calls.begin(), scripted.calls.end(), call) != scripted.calls.end();
    }

    /// The current names go, the older ones come.
    void MakeOlder() {
        for (const char* name : {"Gain", "ExposureTime", "BalanceRatio", "AutoTargetBrightness"})
            scripted.features.erase(name);
        scripted.features["GainRaw"] = {ScriptedFeature::Integer{36, {33, 512}}};
        scripted.features["ExposureTimeAbs"] = {4500.0};
        scripted.features["BalanceRatioAbs"] = {1.5};
        scripted.features["AutoTargetValue"] = {ScriptedFeature::Integer{50, {0, 255}}};
    }

    VirtualClock clock;
    std::ostringstream report;
    ScriptedCamera scripted{[](const std::string& breach) { ADD_FAILURE() << breach; }};
    std::unique_ptr<CameraDevice> device;
};

TEST_F(AutomaticAdjustment, OfExposureGoesOn) {
    AdjustExposureContinuously(*device, report);
    EXPECT_EQ(report.str(), "ExposureAuto 'GainAuto = Continuous'.\nInitial exposure time = 5000 us\n");
    EXPECT_EQ(device->GetEnumeration("ExposureAuto"), "Continuous");
    EXPECT_EQ(device->GetEnumeration("GainAuto"), "Off");
}

TEST_F(AutomaticAdjustment, OfGainGoesOn) {
    AdjustGainContinuously(*device, report);
    EXPECT_EQ(report.str(), "Trying 'GainAuto = Continuous'.\nInitial Gain = 1.5\n");
    EXPECT_EQ(device->GetEnumeration("GainAuto"), "Continuous");
    EXPECT_EQ(device->GetEnumeration("ExposureAuto"), "Off");
}

TEST_F(AutomaticAdjustment, OfExposureOnceReportsWhatItFound) {
    ThenImages(3);
    TurnOffAfter(3, "ExposureAuto", "ExposureTime", 12'345.5);
    AdjustExposureOnce(*device, clock, report);
    EXPECT_EQ(report.str(), "Trying 'ExposureAuto = Once'.\nInitial exposure time = 5000 us\n"
                            "ExposureAuto went back to 'Off' after 3 frames.\n"
                            "Final exposure time = 12345.5 us\n");
    EXPECT_EQ(clock.now, 300U);
    EXPECT_EQ(scripted.held, 0);
}

TEST_F(AutomaticAdjustment, OfGainOnceReportsWhatItFound) {
    ThenImages(2);
    TurnOffAfter(2, "GainAuto", "Gain", 4.0);
    AdjustGainOnce(*device, clock, report);
    EXPECT_EQ(report.str(), "Trying 'GainAuto = Once'.\nInitial Gain = 1.5\n"
                            "GainAuto went back to 'Off' after 2 frames.\nFinal Gain = 4\n");
    EXPECT_EQ(clock.now, 200U);
}

TEST_F(AutomaticAdjustment, OfWhiteBalanceOnceReportsTheRatios) {
    ThenImages(1);
    AnswerBalanceRatios(1.5, 1.0, 2.25);
    scripted.onCall = [this, answer = scripted.onCall](const std::string& call) {
        answer(call);
        if (call == "GrabOne 5000")
            TurnOff("BalanceWhiteAuto");
    };
    AdjustWhiteBalanceOnce(*device, clock, report);
    EXPECT_EQ(report.str(), "Trying 'BalanceWhiteAuto = Once'.\n"
                            "Initial balance ratio: R = 1.5 G = 1 B = 2.25\n"
                            "BalanceWhiteAuto went back to 'Off' after 1 frames.\n"
                            "Final balance ratio: R = 1.5 G = 1 B = 2.25\n");
    EXPECT_TRUE(Called("Set AutoFunctionROIWidth 2464"));
    EXPECT_FALSE(Called("Set AutoTargetBrightness 0.300000")) << "it does not aim at a brightness";
}

TEST_F(AutomaticAdjustment, ThatIsOffAtOnceCostsOneImageAnd100Milliseconds) {
    ThenImages(1);
    scripted.onEnumerationSet = [this](std::string_view feature) {
        if (feature == "ExposureAuto")
            TurnOff("ExposureAuto");
    };
    AdjustExposureOnce(*device, clock, report);
    EXPECT_EQ(clock.now, 100U);
    EXPECT_NE(report.str().find("after 1 frames."), std::string::npos);
}

TEST_F(AutomaticAdjustment, MayTake100Images) {
    ThenImages(100);
    TurnOffAfter(100, "GainAuto", "Gain", 2.0);
    AdjustGainOnce(*device, clock, report);
    EXPECT_NE(report.str().find("after 100 frames."), std::string::npos);
    EXPECT_EQ(clock.now, 10'000U);
}

using AdjustOnce = void (*)(CameraDevice&, Clock&, std::ostream&);

struct Unfinished {
    AdjustOnce adjust;
    const char* text;
};

class UnfinishedAdjustment : public AutomaticAdjustment, public testing::WithParamInterface<Unfinished> {};

TEST_P(UnfinishedAdjustment, EndsAfterTheImage101) {
    ThenImages(101);
    try {
        GetParam().adjust(*device, clock, report);
        FAIL() << "it cannot have finished";
    } catch (const CameraError& error) {
        EXPECT_STREQ(error.what(), GetParam().text);
    }
    EXPECT_EQ(scripted.StepsLeft(), 0U);
    EXPECT_EQ(clock.now, 10'100U);
    EXPECT_EQ(report.str().find("went back"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    Each, UnfinishedAdjustment,
    testing::Values(Unfinished{AdjustExposureOnce, "The adjustment of auto exposure did not finish."},
                    Unfinished{AdjustGainOnce, "The adjustment of auto gain did not finish."},
                    Unfinished{AdjustWhiteBalanceOnce,
                               "The adjustment of auto white balance did not finish."}));

TEST_F(AutomaticAdjustment, ThrowsWhenAnImageDoesNotCome) {
    ThenImages(1);
    scripted.ThenNothing();
    EXPECT_THROW(AdjustExposureOnce(*device, clock, report), CameraError);
    EXPECT_EQ(clock.now, 100U);
}

TEST_F(AutomaticAdjustment, ThatTheCameraDoesNotHaveIsSaidAndNothingElseDone) {
    for (const char* function : {"ExposureAuto", "BalanceWhiteAuto"})
        scripted.features.erase(function);
    scripted.features.at("GainAuto").writable = false;
    AdjustExposureContinuously(*device, report);
    AdjustExposureOnce(*device, clock, report);
    AdjustGainContinuously(*device, report);
    AdjustGainOnce(*device, clock, report);
    AdjustWhiteBalanceOnce(*device, clock, report);
    EXPECT_EQ(report.str(), "The camera does not support Exposure Auto.\n"
                            "The camera does not support Exposure Auto.\n"
                            "The camera does not support Gain Auto.\n"
                            "The camera does not support Gain Auto.\n"
                            "The camera does not support Balance White Auto.\n");
    EXPECT_TRUE(scripted.calls.empty());
}

TEST_F(AutomaticAdjustment, UsesTheOlderNamesWhereTheCameraHasThem) {
    MakeOlder();
    AdjustExposureContinuously(*device, report);
    AdjustGainContinuously(*device, report);
    EXPECT_EQ(report.str(), "ExposureAuto 'GainAuto = Continuous'.\nInitial exposure time = 4500 us\n"
                            "Trying 'GainAuto = Continuous'.\nInitial Gain = 36\n");
    EXPECT_TRUE(Called("Set AutoTargetValue 80"));
    EXPECT_EQ(ReadBalanceRatios(*device), (std::array<double, 3>{1.5, 1.5, 1.5}));
}

TEST_F(AutomaticAdjustment, PrefersTheNewBrightnessTarget) {
    scripted.features["AutoTargetValue"] = {ScriptedFeature::Integer{50, {0, 255}}};
    SetBrightnessTarget(*device);
    EXPECT_EQ(scripted.calls, Texts{"Set AutoTargetBrightness 0.300000"});
}

TEST_F(AutomaticAdjustment, NeedsNoBrightnessTarget) {
    scripted.features.erase("AutoTargetBrightness");
    SetBrightnessTarget(*device);
    EXPECT_TRUE(scripted.calls.empty());
}

TEST_F(AutomaticAdjustment, MeasuresTheWholePictureUnderTheOlderNamesToo) {
    std::erase_if(scripted.features,
                  [](const auto& feature) { return feature.first.starts_with("AutoFunctionROI"); });
    using Integer = ScriptedFeature::Integer;
    scripted.features["AutoFunctionAOISelector"] = {ScriptedFeature::Enumeration{"AOI1", {"AOI1", "AOI2"}}};
    scripted.features["AutoFunctionAOIUsageIntensity"] = {true};
    scripted.features["AutoFunctionAOIOffsetX"] = {Integer{8, {4, 100}}};
    scripted.features["AutoFunctionAOIOffsetY"] = {Integer{8, {0, 100}}};
    scripted.features["AutoFunctionAOIWidth"] = {Integer{8, {1, 2448}}};
    scripted.features["AutoFunctionAOIHeight"] = {Integer{8, {1, 2048}}};
    MeasureWholePicture(*device);
    EXPECT_EQ(scripted.calls,
              (Texts{"Set AutoFunctionAOISelector AOI1", "Set AutoFunctionAOIUsageIntensity true",
                     "Set AutoFunctionAOISelector AOI2", "Set AutoFunctionAOIUsageIntensity false",
                     "Set AutoFunctionAOISelector AOI1", "Set AutoFunctionAOIOffsetX 4",
                     "Set AutoFunctionAOIOffsetY 0", "Set AutoFunctionAOIWidth 2448",
                     "Set AutoFunctionAOIHeight 2048"}));
}

TEST_F(AutomaticAdjustment, LeavesOutWhatARegionDoesNotHave) {
    for (const char* name : {"AutoFunctionROIUseBrightness", "AutoFunctionROIOffsetY"})
        scripted.features.erase(name);
    scripted.features.at("AutoFunctionROIHeight").writable = false;
    AdjustGainContinuously(*device, report);
    EXPECT_EQ(scripted.calls, (Texts{"Set AutoFunctionROISelector ROI1", "Set AutoFunctionROISelector ROI2",
                                     "Set AutoFunctionROISelector ROI1", "Set AutoFunctionROIOffsetX 0",
                                     "Set AutoFunctionROIWidth 2464", "Set AutoTargetBrightness 0.300000",
                                     "Set GainAuto Continuous"}));
}

TEST_F(AutomaticAdjustment, DoesWithASingleRegion) {
    scripted.features["AutoFunctionROISelector"] = {ScriptedFeature::Enumeration{"ROI1", {"ROI1"}}};
    MeasureWholePicture(*device);
    EXPECT_TRUE(Called("Set AutoFunctionROIUseBrightness true"));
    EXPECT_FALSE(Called("Set AutoFunctionROIUseBrightness false"));
    EXPECT_TRUE(Called("Set AutoFunctionROIHeight 2054"));
}

TEST_F(AutomaticAdjustment, KnowsTheNewerSwitchOfTheOlderRegions) {
    std::erase_if(scripted.features,
                  [](const auto& feature) { return feature.first.starts_with("AutoFunctionROI"); });
    scripted.features["AutoFunctionAOISelector"] = {ScriptedFeature::Enumeration{"AOI1", {"AOI1", "AOI2"}}};
    scripted.features["AutoFunctionAOIUseBrightness"] = {false};
    MeasureWholePicture(*device);
    EXPECT_EQ(scripted.calls,
              (Texts{"Set AutoFunctionAOISelector AOI1", "Set AutoFunctionAOIUseBrightness true",
                     "Set AutoFunctionAOISelector AOI2", "Set AutoFunctionAOIUseBrightness false",
                     "Set AutoFunctionAOISelector AOI1"}));
}

TEST_F(AutomaticAdjustment, DoesWithoutRegions) {
    std::erase_if(scripted.features,
                  [](const auto& feature) { return feature.first.starts_with("AutoFunctionROI"); });
    AdjustGainContinuously(*device, report);
    EXPECT_EQ(scripted.calls, (Texts{"Set AutoTargetBrightness 0.300000", "Set GainAuto Continuous"}));
}

TEST_F(AutomaticAdjustment, AsksForTheSizeAfterTheOffsetsWereSet) {
    scripted.onCall = [this](const std::string& call) {
        if (call == "Set AutoFunctionROIOffsetX 0")
            std::get<ScriptedFeature::Integer>(scripted.features.at("AutoFunctionROIWidth").value).range = {
                1, 4000};
    };
    MeasureWholePicture(*device);
    EXPECT_TRUE(Called("Set AutoFunctionROIWidth 4000"));
}

TEST_F(AutomaticAdjustment, WritesWholeGainsWithinTheirRange) {
    MakeOlder();
    for (const double gain : {33.4, 40.5, 1.0, 1e9, -1e9})
        WriteGain(*device, gain);
    WriteExposureTime(*device, 800.0);
    EXPECT_EQ(scripted.calls, (Texts{"Set GainRaw 33", "Set GainRaw 41", "Set GainRaw 33", "Set GainRaw 512",
                                     "Set GainRaw 33", "Set ExposureTimeAbs 800.000000"}));
}

TEST_F(AutomaticAdjustment, DoesNotTakeAnOlderNameForAFeatureThatIsLocked) {
    scripted.features.at("Gain").writable = false;
    scripted.features["GainRaw"] = {ScriptedFeature::Integer{36, {33, 512}}};
    EXPECT_THROW(WriteGain(*device, 40.0), CameraError);
    EXPECT_FALSE(Called("Set GainRaw 40"));
}

TEST_F(AutomaticAdjustment, ThrowsWithoutAnyGain) {
    scripted.features.erase("Gain");
    EXPECT_THROW(ReadGain(*device), CameraError);
    EXPECT_THROW(WriteGain(*device, 1.0), CameraError);
    EXPECT_THROW(AdjustGainContinuously(*device, report), CameraError);
}

} // namespace
} // namespace tessaro
