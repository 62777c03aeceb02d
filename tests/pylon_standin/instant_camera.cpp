#include "tests/pylon_standin/pylon_standin.h"

#include <pylon/InstantCamera.h>
#include <string>

namespace Pylon {

using tessaro::pylon_standin::Frame;
using tessaro::pylon_standin::TheRuntime;

CGrabResultData::CGrabResultData(Frame frame) : m_frame(std::make_unique<Frame>(std::move(frame))) {
    ++TheRuntime().images;
}

CGrabResultData::~CGrabResultData() {
    --TheRuntime().images;
}

bool CGrabResultData::GrabSucceeded() const {
    return m_frame->succeeded;
}

EPixelType CGrabResultData::GetPixelType() const {
    return m_frame->pixelFormat == "BayerRG8" ? PixelType_BayerRG8
           : m_frame->pixelFormat == "Mono8"  ? PixelType_Mono8
                                              : PixelType_BayerRG12;
}

std::uint32_t CGrabResultData::GetWidth() const {
    return m_frame->width;
}

std::uint32_t CGrabResultData::GetHeight() const {
    return m_frame->height;
}

std::size_t CGrabResultData::GetPaddingX() const {
    return m_frame->paddingX;
}

void* CGrabResultData::GetBuffer() const {
    return m_frame->bytes.data();
}

std::size_t CGrabResultData::GetPayloadSize() const {
    return m_frame->bytes.size();
}

const CGrabResultData* CGrabResultPtr::operator->() const {
    if (m_data == nullptr)
        throw RuntimeException("No grab result data is referenced.");
    return m_data.get();
}

void CAcquireSingleFrameConfiguration::ApplyConfiguration(GenApi::INodeMap& nodeMap) {
    CEnumParameter(nodeMap, "AcquisitionMode").SetValue("SingleFrame");
}

void CAcquireSingleFrameConfiguration::OnOpened(CInstantCamera& camera) {
    ApplyConfiguration(camera.GetNodeMap());
}

void CAcquireContinuousConfiguration::ApplyConfiguration(GenApi::INodeMap& nodeMap) {
    CEnumParameter(nodeMap, "AcquisitionMode").SetValue("Continuous");
}

void CAcquireContinuousConfiguration::OnOpened(CInstantCamera& camera) {
    ApplyConfiguration(camera.GetNodeMap());
}

CInstantCamera::CInstantCamera()
    : MaxNumBuffer(*this), m_configuration(std::make_unique<CAcquireContinuousConfiguration>()) {}

CInstantCamera::~CInstantCamera() {
    DestroyDevice();
}

void CInstantCamera::BufferCount::SetValue(std::int64_t value) {
    if (m_camera.IsGrabbing() || value < 1)
        throw AccessException("MaxNumBuffer cannot be set.");
    m_value = value;
}

void CInstantCamera::Attach(IPylonDevice* device, ECleanup) {
    DestroyDevice();
    m_device.reset(device);
}

void CInstantCamera::DestroyDevice() {
    SetImagesLeft(0);
    if (m_device != nullptr)
        --TheRuntime().devices;
    m_device.reset();
    m_nodeMap.camera.reset();
    m_open = false;
}

bool CInstantCamera::IsCameraDeviceRemoved() const {
    return m_device != nullptr && m_device->camera->removed;
}

void CInstantCamera::CheckDevice() const {
    if (m_device == nullptr)
        throw RuntimeException("No device is attached.");
    if (m_device->camera->removed)
        throw RuntimeException("The device has been removed from the PC.");
}

void CInstantCamera::Open() {
    TheRuntime().Note("Open");
    CheckDevice();
    m_open = true;
    m_nodeMap.camera = m_device->camera;
    m_configuration->OnOpened(*this);
}

GenApi::INodeMap& CInstantCamera::GetNodeMap() {
    if (m_device == nullptr)
        throw RuntimeException("No device is attached.");
    return m_nodeMap;
}

void CInstantCamera::StartGrabbing(std::size_t count, EGrabStrategy strategy, EGrabLoop loop) {
    TheRuntime().Note("StartGrabbing",
                      std::to_string(count) + " " + std::to_string(strategy) + " " + std::to_string(loop));
    CheckDevice();
    if (IsGrabbing())
        throw RuntimeException("The camera is already grabbing.");
    if (!m_open)
        Open();
    SetImagesLeft(count);
}

void CInstantCamera::StopGrabbing() {
    TheRuntime().Note("StopGrabbing");
    SetImagesLeft(0);
}

void CInstantCamera::SetImagesLeft(std::size_t count) {
    m_left = count;
    if (m_device == nullptr)
        return;
    for (auto& [name, feature] : m_device->camera->features)
        feature.locked = feature.lockedByGrabs && count > 0;
}

bool CInstantCamera::TakeFrame(CGrabResultPtr& result, ETimeoutHandling handling) {
    const auto camera = m_device->camera;
    const auto ready = [&] {
        return !camera->removed && !camera->frames.empty() && TheRuntime().images < MaxNumBuffer.GetValue();
    };
    if (!ready() && TheRuntime().onWait)
        TheRuntime().onWait();
    if (!ready()) {
        if (handling == TimeoutHandling_ThrowException)
            throw TimeoutException("Grab timed out.");
        return false;
    }
    result.m_data = std::make_shared<const CGrabResultData>(std::move(camera->frames.front()));
    camera->frames.pop_front();
    SetImagesLeft(m_left - 1);
    return true;
}

bool CInstantCamera::RetrieveResult(unsigned int timeoutMs, CGrabResultPtr& result,
                                    ETimeoutHandling handling) {
    TheRuntime().Note("RetrieveResult", std::to_string(timeoutMs) + " " + std::to_string(handling));
    result.Release();
    return IsGrabbing() && TakeFrame(result, handling);
}

void CInstantCamera::RegisterConfiguration(CConfigurationEventHandler* handler, ERegistrationMode mode,
                                           ECleanup cleanup) {
    std::unique_ptr<CConfigurationEventHandler> owned(handler);
    TheRuntime().Note("RegisterConfiguration", std::to_string(mode) + " " + std::to_string(cleanup));
    m_configuration = std::move(owned);
}

} // namespace Pylon
