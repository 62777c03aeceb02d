#pragma once

#include "platform/camera_device.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// What every CameraRuntime and CameraDevice must do. Instantiate it with a machine of this shape, whose
// camera has the features PixelFormat (BayerRG8 among its values), Gain, ExposureTime, Width and Height:
// INSTANTIATE_TYPED_TEST_SUITE_P(Scripted, CameraDeviceContract, ScriptedCameraMachine);
//   Runtime()            the adapter, a CameraRuntime&; the same at every call
//   ExpectImages(count)  so many whole images will be asked for next, of Width x Height samples
//   FallSilent()         from now on the camera sends no image, but answers
//   Disappear()          from now on it does not answer at all; leave it out where that cannot be had

namespace tessaro {

template<class Machine>
class CameraDeviceContract : public testing::Test {
protected:
    static constexpr std::uint32_t timeoutMs = 10'000; // far longer than any image takes
    static constexpr std::uint32_t shortMs = 50;
    static constexpr const char* unknown = "NoSuchFeatureOfAnyCamera";

    CameraDeviceContract() {
        m_machine.Runtime().Initialize();
        m_device = m_machine.Runtime().CreateFirstDevice();
    }

    CameraDevice& Opened() {
        m_device->Open();
        return *m_device;
    }

    CameraDevice& Grabbing(int count) {
        m_machine.ExpectImages(count);
        Opened().StartGrabbing(count);
        return *m_device;
    }

    void ExpectWholeImage(const GrabResult& result) {
        EXPECT_TRUE(result.GrabSucceeded());
        EXPECT_EQ(result.GetWidth(), m_device->GetInteger("Width"));
        EXPECT_EQ(result.GetHeight(), m_device->GetInteger("Height"));
        EXPECT_EQ(result.GetBuffer().size(),
                  static_cast<std::size_t>(result.GetWidth()) * static_cast<std::size_t>(result.GetHeight()));
    }

    static std::vector<std::uint8_t> Copy(const GrabResult& result) {
        return {result.GetBuffer().begin(), result.GetBuffer().end()};
    }

    Machine m_machine;
    std::unique_ptr<CameraDevice> m_device; // goes before its machine
};

TYPED_TEST_SUITE_P(CameraDeviceContract);

TYPED_TEST_P(CameraDeviceContract, OpensOnceAndAgainWithoutHarm) {
    ASSERT_NE(this->m_device, nullptr);
    EXPECT_FALSE(this->m_device->IsOpen());
    this->m_device->Open();
    EXPECT_TRUE(this->m_device->IsOpen());
    this->m_device->Open();
    EXPECT_TRUE(this->m_device->IsOpen());
    this->ExpectWholeImage(this->Grabbing(1).RetrieveResult(this->timeoutMs));
}

TYPED_TEST_P(CameraDeviceContract, CanDoNothingBeforeItIsOpen) {
    CameraDevice& device = *this->m_device;
    EXPECT_FALSE(device.IsReadable("Gain"));
    EXPECT_FALSE(device.IsWritable("Gain"));
    EXPECT_THROW(device.GetFloat("Gain"), CameraError);
    EXPECT_THROW(device.SetFloat("Gain", 1.0), CameraError);
    EXPECT_THROW(device.StartGrabbing(1), CameraError);
    EXPECT_FALSE(device.IsGrabbing());
    EXPECT_THROW(device.RetrieveResult(this->shortMs), CameraError);
    EXPECT_THROW(device.GrabOne(this->shortMs), CameraError);
    EXPECT_THROW(device.SetMaxNumBuffer(10), CameraError);
    EXPECT_THROW(device.RegisterConfiguration(Acquisition::SingleFrame), CameraError);
}

TYPED_TEST_P(CameraDeviceContract, KnowsWhichFeaturesThereAre) {
    CameraDevice& device = this->Opened();
    for (const char* feature : {"PixelFormat", "Gain", "ExposureTime", "Width", "Height"})
        EXPECT_TRUE(device.IsReadable(feature)) << feature;
    for (const char* feature : {"PixelFormat", "Gain", "ExposureTime"})
        EXPECT_TRUE(device.IsWritable(feature)) << feature;
    EXPECT_FALSE(device.IsReadable(this->unknown));
    EXPECT_FALSE(device.IsWritable(this->unknown));
    EXPECT_FALSE(device.IsReadable(""));
}

TYPED_TEST_P(CameraDeviceContract, ThrowsForAFeatureThatIsNotThere) {
    CameraDevice& device = this->Opened();
    EXPECT_THROW(device.GetEnumeration(this->unknown), CameraError);
    EXPECT_THROW(device.SetEnumeration(this->unknown, "Off"), CameraError);
    EXPECT_THROW(device.SettableValues(this->unknown), CameraError);
    EXPECT_THROW(device.GetFloat(this->unknown), CameraError);
    EXPECT_THROW(device.SetFloat(this->unknown, 1.0), CameraError);
    EXPECT_THROW(device.GetInteger(this->unknown), CameraError);
    EXPECT_THROW(device.SetInteger(this->unknown, 1), CameraError);
    EXPECT_THROW(device.GetIntegerRange(this->unknown), CameraError);
    EXPECT_THROW(device.SetBoolean(this->unknown, true), CameraError);
}

TYPED_TEST_P(CameraDeviceContract, ThrowsForAFeatureOfAnotherKind) {
    CameraDevice& device = this->Opened();
    EXPECT_THROW(device.GetFloat("PixelFormat"), CameraError);
    EXPECT_THROW(device.GetEnumeration("Gain"), CameraError);
    EXPECT_THROW(device.SetBoolean("ExposureTime", true), CameraError);
    EXPECT_THROW(device.SettableValues("Width"), CameraError);
    EXPECT_TRUE(device.IsReadable("Gain")) << "it goes on";
}

TYPED_TEST_P(CameraDeviceContract, TakesTheValuesOfAnEnumerationAndNoOther) {
    CameraDevice& device = this->Opened();
    const std::vector<std::string> formats = device.SettableValues("PixelFormat");
    ASSERT_NE(std::find(formats.begin(), formats.end(), "BayerRG8"), formats.end());
    device.SetEnumeration("PixelFormat", "BayerRG8");
    EXPECT_EQ(device.GetEnumeration("PixelFormat"), "BayerRG8");
    EXPECT_THROW(device.SetEnumeration("PixelFormat", "NoSuchFormat"), CameraError);
    EXPECT_EQ(device.GetEnumeration("PixelFormat"), "BayerRG8");
}

TYPED_TEST_P(CameraDeviceContract, KeepsTheNumbersThatAreSet) {
    CameraDevice& device = this->Opened();
    for (const double exposureTimeUs : {8000.0, 12'000.0}) {
        device.SetFloat("ExposureTime", exposureTimeUs);
        EXPECT_NEAR(device.GetFloat("ExposureTime"), exposureTimeUs, exposureTimeUs / 20.0)
            << "cameras have steps";
    }
    for (const double gain : {1.0, 2.0}) {
        device.SetFloat("Gain", gain);
        EXPECT_NEAR(device.GetFloat("Gain"), gain, 0.2);
    }
}

TYPED_TEST_P(CameraDeviceContract, KnowsTheRangesOfWholeNumbers) {
    CameraDevice& device = this->Opened();
    for (const char* feature : {"Width", "Height"}) {
        const IntegerRange range = device.GetIntegerRange(feature);
        EXPECT_GT(range.maximum, 0) << feature;
        EXPECT_LE(range.minimum, device.GetInteger(feature)) << feature;
        EXPECT_GE(range.maximum, device.GetInteger(feature)) << feature;
    }
}

TYPED_TEST_P(CameraDeviceContract, GrabsUntilAsManyImagesWereRetrieved) {
    for (const int count : {1, 4}) {
        CameraDevice& device = this->Grabbing(count);
        for (int image = 0; image < count; ++image) {
            EXPECT_TRUE(device.IsGrabbing()) << image << " of " << count;
            this->ExpectWholeImage(device.RetrieveResult(this->timeoutMs));
        }
        EXPECT_FALSE(device.IsGrabbing()) << count;
    }
}

TYPED_TEST_P(CameraDeviceContract, WaitsForAsLongAsItTakes) {
    CameraDevice& device = this->Grabbing(1);
    this->ExpectWholeImage(device.RetrieveResult(waitWithoutLimit));
}

TYPED_TEST_P(CameraDeviceContract, RetrievesNothingWithoutAGrab) {
    CameraDevice& device = this->Opened();
    EXPECT_FALSE(device.IsGrabbing());
    EXPECT_THROW(device.RetrieveResult(waitWithoutLimit), CameraError);
    this->ExpectWholeImage(this->Grabbing(1).RetrieveResult(this->timeoutMs));
    EXPECT_THROW(device.RetrieveResult(waitWithoutLimit), CameraError) << "all were retrieved";
}

TYPED_TEST_P(CameraDeviceContract, BeginsAnewWhileItGrabs) {
    CameraDevice& device = this->Grabbing(2);
    this->ExpectWholeImage(device.RetrieveResult(this->timeoutMs));
    this->m_machine.ExpectImages(2); // one more than the first grab leaves
    device.StartGrabbing(3);
    for (int image = 0; image < 3; ++image) {
        EXPECT_TRUE(device.IsGrabbing()) << image;
        this->ExpectWholeImage(device.RetrieveResult(this->timeoutMs));
    }
    EXPECT_FALSE(device.IsGrabbing());
}

TYPED_TEST_P(CameraDeviceContract, GrabsOneImageAtLeast) {
    CameraDevice& device = this->Opened();
    EXPECT_THROW(device.StartGrabbing(0), CameraError);
    EXPECT_THROW(device.StartGrabbing(-1), CameraError);
    EXPECT_FALSE(device.IsGrabbing());
    this->ExpectWholeImage(this->Grabbing(1).RetrieveResult(this->timeoutMs));
}

TYPED_TEST_P(CameraDeviceContract, KeepsImagesForAsLongAsTheyAreHeld) {
    constexpr int heldCount = 5;
    this->Opened().SetMaxNumBuffer(10);
    CameraDevice& device = this->Grabbing(heldCount + 5);
    std::vector<GrabResult> held;
    std::vector<std::vector<std::uint8_t>> copies;
    for (int image = 0; image < heldCount; ++image) {
        held.push_back(device.RetrieveResult(this->timeoutMs));
        copies.push_back(this->Copy(held.back()));
    }
    for (int image = 0; image < 5; ++image)
        this->ExpectWholeImage(device.RetrieveResult(this->timeoutMs));
    this->ExpectWholeImage(this->Grabbing(1).RetrieveResult(this->timeoutMs));
    for (std::size_t image = 0; image < held.size(); ++image)
        EXPECT_EQ(this->Copy(held[image]), copies[image]) << image;
}

TYPED_TEST_P(CameraDeviceContract, GrabsAFrameThatMayBeMovedAbout) {
    CameraDevice& device = this->Grabbing(1);
    GrabResult first = device.RetrieveResult(this->timeoutMs);
    const std::vector<std::uint8_t> copy = this->Copy(first);
    GrabResult second = std::move(first);
    EXPECT_EQ(this->Copy(second), copy);
    second = GrabResult();
    EXPECT_FALSE(second.GrabSucceeded());
}

TYPED_TEST_P(CameraDeviceContract, TakesOneImageByItself) {
    CameraDevice& device = this->Opened();
    this->m_machine.ExpectImages(2);
    this->ExpectWholeImage(device.GrabOne(this->timeoutMs));
    EXPECT_FALSE(device.IsGrabbing());
    this->ExpectWholeImage(device.GrabOne(this->timeoutMs));
    this->ExpectWholeImage(this->Grabbing(1).RetrieveResult(this->timeoutMs));
}

TYPED_TEST_P(CameraDeviceContract, ChangesBetweenTheKindsOfAcquisition) {
    CameraDevice& device = this->Opened();
    this->m_machine.ExpectImages(1);
    device.RegisterConfiguration(Acquisition::SingleFrame);
    this->ExpectWholeImage(device.GrabOne(this->timeoutMs));
    device.RegisterConfiguration(Acquisition::Continuous);
    this->Grabbing(2);
    this->ExpectWholeImage(device.RetrieveResult(this->timeoutMs));
    this->ExpectWholeImage(device.RetrieveResult(this->timeoutMs));
    EXPECT_FALSE(device.IsGrabbing());
}

TYPED_TEST_P(CameraDeviceContract, ThrowsWhenNoImageComesInTime) {
    CameraDevice& device = this->Opened();
    this->m_machine.FallSilent();
    device.StartGrabbing(2);
    EXPECT_THROW(device.RetrieveResult(this->shortMs), CameraError);
    EXPECT_TRUE(device.IsGrabbing()) << "nothing was retrieved";
    EXPECT_THROW(device.RetrieveResult(0), CameraError);
    EXPECT_THROW(device.GrabOne(this->shortMs), CameraError);
    EXPECT_TRUE(device.IsReadable("Gain")) << "the camera is still there";
}

TYPED_TEST_P(CameraDeviceContract, ThrowsWhenTheCameraIsGone) {
    if constexpr (requires { this->m_machine.Disappear(); }) {
        CameraDevice& device = this->Grabbing(1);
        this->ExpectWholeImage(device.RetrieveResult(this->timeoutMs));
        this->m_machine.Disappear();
        EXPECT_THROW(
            {
                device.StartGrabbing(1);
                device.RetrieveResult(waitWithoutLimit);
            },
            CameraError);
        EXPECT_THROW(device.GetFloat("Gain"), CameraError);
        EXPECT_THROW(device.SetMaxNumBuffer(10), CameraError);
        EXPECT_THROW(device.RegisterConfiguration(Acquisition::Continuous), CameraError);
        EXPECT_THROW(device.IsReadable("Gain"), CameraError) << "it is not the feature that is missing";
        EXPECT_THROW(device.IsWritable("Gain"), CameraError);
        EXPECT_FALSE(device.IsOpen());
    } else {
        GTEST_SKIP() << "this machine's camera cannot disappear";
    }
}

REGISTER_TYPED_TEST_SUITE_P(CameraDeviceContract, OpensOnceAndAgainWithoutHarm, CanDoNothingBeforeItIsOpen,
                            KnowsWhichFeaturesThereAre, ThrowsForAFeatureThatIsNotThere,
                            ThrowsForAFeatureOfAnotherKind, TakesTheValuesOfAnEnumerationAndNoOther,
                            KeepsTheNumbersThatAreSet, KnowsTheRangesOfWholeNumbers,
                            GrabsUntilAsManyImagesWereRetrieved, WaitsForAsLongAsItTakes,
                            RetrievesNothingWithoutAGrab, BeginsAnewWhileItGrabs, GrabsOneImageAtLeast,
                            KeepsImagesForAsLongAsTheyAreHeld, GrabsAFrameThatMayBeMovedAbout,
                            TakesOneImageByItself, ChangesBetweenTheKindsOfAcquisition,
                            ThrowsWhenNoImageComesInTime, ThrowsWhenTheCameraIsGone);

} // namespace tessaro
