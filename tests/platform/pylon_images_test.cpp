// Images of the pylon camera runtime: who holds their buffers, and which are no pictures.

#include "tests/platform/pylon_machine.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tessaro {
namespace {

TEST_F(PylonCameraTest, ImagesOutliveTheCameraTheyCameFrom) {
    m_machine.ExpectImages(1);
    const GrabResult held = m_device->GrabOne(100);
    OnCable().removed = true;
    PlugIn("40000001");
    m_device->Open();
    EXPECT_EQ(held.GetBuffer().front(), 1);
    EXPECT_EQ(held.GetBuffer().back(), 24);
}

TEST_F(PylonCameraTest, HandsBuffersBackWhenTheImagesGo) {
    m_machine.ExpectImages(4);
    m_device->StartGrabbing(4);
    std::vector<GrabResult> held;
    for (int image = 1; image <= 4; ++image) {
        held.push_back(m_device->RetrieveResult(100));
        EXPECT_EQ(TheRuntime().images, image);
    }
    for (std::size_t image = 0; image < held.size(); ++image)
        EXPECT_EQ(held[image].GetBuffer().front(), image + 1);
    held.clear();
    EXPECT_EQ(TheRuntime().images, 0);
}

TEST_F(PylonCameraTest, ThrowsWhileAllBuffersAreHeldAndGoesOnAfterwards) {
    m_device->SetMaxNumBuffer(3);
    m_machine.ExpectImages(4);
    m_device->StartGrabbing(4);
    std::vector<GrabResult> held;
    for (int image = 0; image < 3; ++image)
        held.push_back(m_device->RetrieveResult(100));
    EXPECT_EQ(ErrorOf([this] { m_device->RetrieveResult(waitWithoutLimit); }),
              "All image buffers of the camera are held");
    held.erase(held.begin() + 1);
    held.push_back(m_device->RetrieveResult(100));
    EXPECT_EQ(held.back().GetBuffer().front(), 4);
}

TEST_F(PylonCameraTest, HoldsTenImagesUnlessItIsTold) {
    m_machine.ExpectImages(11);
    m_device->StartGrabbing(11);
    std::vector<GrabResult> held;
    for (int image = 0; image < 10; ++image)
        held.push_back(m_device->RetrieveResult(100));
    EXPECT_THROW(m_device->RetrieveResult(100), CameraError);
}

TEST_F(PylonCameraTest, ANumberOfBuffersThatCannotBeIsTheNextGrabsError) {
    m_device->SetMaxNumBuffer(0);
    EXPECT_EQ(ErrorOf([this] { m_device->StartGrabbing(1); }), "MaxNumBuffer cannot be set.");
    m_device->SetMaxNumBuffer(-5);
    EXPECT_THROW(m_device->GrabOne(100), CameraError);
}

TEST_F(PylonCameraTest, ABrokenImageIsAResultWithoutSamples) {
    Frame frame = WholeFrame(1);
    frame.succeeded = false;
    OnCable().frames.push_back(frame);
    m_device->StartGrabbing(1);
    const GrabResult result = m_device->RetrieveResult(100);
    EXPECT_FALSE(result.GrabSucceeded());
    EXPECT_TRUE(result.GetBuffer().empty());
    EXPECT_FALSE(m_device->IsGrabbing());
}

TEST_F(PylonCameraTest, RefusesWhatIsNoWholeImage) {
    Frame oneByteShort = WholeFrame(1);
    oneByteShort.bytes.pop_back();
    Frame withoutBytes = WholeFrame(1);
    withoutBytes.bytes = {};
    for (const Frame& frame : {oneByteShort, withoutBytes})
        EXPECT_EQ(ErrorOfFrame(frame), "The camera sent less than a whole image");
    Frame huge = WholeFrame(1);
    huge.width = huge.height = 0xFFFFFFFF;
    Frame narrow = WholeFrame(1);
    narrow.width = frameWidth - 1;
    Frame low = WholeFrame(1);
    low.height = frameHeight - 1;
    for (const Frame& frame : {huge, narrow, low, Frame{0, 0, {}}})
        EXPECT_EQ(ErrorOfFrame(frame), "The camera sent an image of another size than it was set to");
    EXPECT_EQ(TheRuntime().images, 0) << "their buffers are free again";
}

TEST_F(PylonCameraTest, RefusesOtherThanTheMosaicWithoutGaps) {
    Frame twoBytes = WholeFrame(1);
    twoBytes.pixelFormat = "BayerRG12";
    Frame grey = WholeFrame(1);
    grey.pixelFormat = "Mono8";
    Frame gaps = WholeFrame(1);
    gaps.paddingX = 2;
    for (const Frame& frame : {twoBytes, grey, gaps})
        EXPECT_EQ(ErrorOfFrame(frame), "The camera sent an image that is not BayerRG8");
}

TEST_F(PylonCameraTest, TakesTheFirstSamplesOfALongerPayload) {
    Frame withChunks = WholeFrame(1);
    withChunks.bytes.resize(frameBytes + 100);
    OnCable().frames.push_back(withChunks);
    EXPECT_EQ(m_device->GrabOne(100).GetBuffer().size(), frameBytes);
}

} // namespace
} // namespace tessaro
