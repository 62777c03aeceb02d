#include "platform/pylon/pylon_camera.h"

#include "platform/pylon/pylon_errors.h"

#include <algorithm>
#include <utility>

namespace tessaro {

namespace {

// A wait for an image may not end by itself once the camera is gone; between two of these somebody looks.
constexpr std::uint32_t longestWait = 500; // milliseconds

constexpr const char* widthFeature = "Width";
constexpr const char* heightFeature = "Height";

Pylon::String_t VendorText(std::string_view text) {
    return Pylon::String_t(std::string(text).c_str());
}

std::string OurText(const Pylon::String_t& text) {
    return text.c_str();
}

/// Dots and digits: an address. (Serial numbers have no dots.)
bool IsAddress(const std::string& camera) {
    return camera.find('.') != std::string::npos &&
           camera.find_first_not_of("0123456789.") == std::string::npos;
}

Pylon::IPylonDevice* CreateDevice(const std::string& camera) {
    Pylon::CDeviceInfo wanted;
    if (IsAddress(camera))
        wanted.SetPropertyValue("IpAddress", VendorText(camera));
    else if (!camera.empty())
        wanted.SetSerialNumber(VendorText(camera));
    return Pylon::CTlFactory::GetInstance().CreateFirstDevice(wanted);
}

/// Calls `use` with the camera's feature of the vendor's parameter class.
template<class Parameter, class Use>
auto WithFeature(Pylon::CInstantCamera& camera, std::string_view feature, const Use& use) {
    return WithCameraErrors([&] {
        Parameter parameter(camera.GetNodeMap(), VendorText(feature).c_str());
        return use(parameter);
    });
}

/// What the vendor's library says of its own state; false when it cannot answer.
template<class Question>
bool Answer(const Question& question) {
    try {
        return question();
    } catch (const Pylon::GenericException&) {
        return false;
    }
}

/// The configuration does its work when the camera opens; one that is open already needs it now.
template<class Configuration>
void Configure(Pylon::CInstantCamera& camera) {
    camera.RegisterConfiguration(new Configuration, Pylon::RegistrationMode_ReplaceAll,
                                 Pylon::Cleanup_Delete);
    if (camera.IsOpen())
        Configuration::ApplyConfiguration(camera.GetNodeMap());
}

} // namespace

PylonCamera::PylonCamera(std::shared_ptr<void> library, std::string camera)
    : m_library(std::move(library)), m_wanted(std::move(camera)) {
    WithCameraErrors([this] { m_camera.Attach(CreateDevice(m_wanted), Pylon::Cleanup_Delete); });
}

void PylonCamera::Open() {
    WithCameraErrors([this] {
        if (m_camera.IsCameraDeviceRemoved())
            m_camera.DestroyDevice();
        if (!m_camera.IsPylonDeviceAttached())
            m_camera.Attach(CreateDevice(m_wanted), Pylon::Cleanup_Delete);
        if (m_camera.IsGrabbing())
            m_camera.StopGrabbing();
        if (!m_camera.IsOpen()) {
            Configure<Pylon::CAcquireContinuousConfiguration>(m_camera);
            m_camera.Open();
        }
        SelectWholeSensor();
    });
}

/// What cannot be written is fixed. The offsets first: they limit how large the image may be.
void PylonCamera::SelectWholeSensor() {
    for (const char* offset : {"OffsetX", "OffsetY"})
        if (IsWritable(offset))
            SetInteger(offset, GetIntegerRange(offset).minimum);
    for (const char* size : {widthFeature, heightFeature})
        if (IsWritable(size))
            SetInteger(size, GetIntegerRange(size).maximum);
    RememberSize();
}

void PylonCamera::RememberSize() {
    m_width = GetInteger(widthFeature);
    m_height = GetInteger(heightFeature);
}

bool PylonCamera::IsOpen() const {
    return Answer([this] { return m_camera.IsOpen() && !m_camera.IsCameraDeviceRemoved(); });
}

/// The vendor's library finds no feature in a camera that is gone.
template<class Question>
bool PylonCamera::AskAbout(std::string_view feature, const Question& question) {
    return WithCameraErrors([&] {
        const bool answer = m_camera.IsOpen() && question(m_camera.GetNodeMap().GetNode(VendorText(feature)));
        RequireNotRemoved();
        return answer;
    });
}

bool PylonCamera::IsReadable(std::string_view feature) {
    return AskAbout(feature, [](auto* node) { return GenApi::IsReadable(node); });
}

bool PylonCamera::IsWritable(std::string_view feature) {
    return AskAbout(feature, [](auto* node) { return GenApi::IsWritable(node); });
}

std::string PylonCamera::GetEnumeration(std::string_view feature) {
    return WithFeature<Pylon::CEnumParameter>(m_camera, feature,
                                              [](auto& parameter) { return OurText(parameter.GetValue()); });
}

void PylonCamera::SetEnumeration(std::string_view feature, std::string_view value) {
    WithFeature<Pylon::CEnumParameter>(m_camera, feature,
                                       [&](auto& parameter) { parameter.SetValue(VendorText(value)); });
}

std::vector<std::string> PylonCamera::SettableValues(std::string_view feature) {
    return WithFeature<Pylon::CEnumParameter>(m_camera, feature, [](auto& parameter) {
        Pylon::StringList_t values;
        parameter.GetSettableValues(values);
        std::vector<std::string> texts;
        for (std::size_t i = 0; i < values.size(); ++i)
            texts.push_back(OurText(values[i]));
        return texts;
    });
}

double PylonCamera::GetFloat(std::string_view feature) {
    return WithFeature<Pylon::CFloatParameter>(m_camera, feature,
                                               [](auto& parameter) { return parameter.GetValue(); });
}

void PylonCamera::SetFloat(std::string_view feature, double value) {
    WithFeature<Pylon::CFloatParameter>(m_camera, feature,
                                        [&](auto& parameter) { parameter.SetValue(value); });
}

std::int64_t PylonCamera::GetInteger(std::string_view feature) {
    return WithFeature<Pylon::CIntegerParameter>(m_camera, feature,
                                                 [](auto& parameter) { return parameter.GetValue(); });
}

void PylonCamera::SetInteger(std::string_view feature, std::int64_t value) {
    WithFeature<Pylon::CIntegerParameter>(m_camera, feature,
                                          [&](auto& parameter) { parameter.SetValue(value); });
    if (feature == widthFeature || feature == heightFeature)
        RememberSize();
}

IntegerRange PylonCamera::GetIntegerRange(std::string_view feature) {
    return WithFeature<Pylon::CIntegerParameter>(m_camera, feature, [](auto& parameter) {
        return IntegerRange{parameter.GetMin(), parameter.GetMax()};
    });
}

void PylonCamera::SetBoolean(std::string_view feature, bool value) {
    WithFeature<Pylon::CBooleanParameter>(m_camera, feature,
                                          [&](auto& parameter) { parameter.SetValue(value); });
}

void PylonCamera::RequireNotRemoved() const {
    if (m_camera.IsCameraDeviceRemoved())
        throw CameraError("The camera was removed");
}

void PylonCamera::RequireOpen() const {
    RequireNotRemoved();
    if (!m_camera.IsOpen())
        throw CameraError("The camera is not open");
}

void PylonCamera::SetMaxNumBuffer(int count) {
    WithCameraErrors([this] { RequireOpen(); });
    m_maxNumBuffer = count;
}

/// The vendor's library would open the camera by itself, and refuses a grab, and another number of buffers,
/// while it grabs.
void PylonCamera::PrepareGrab() {
    RequireOpen();
    if (m_camera.IsGrabbing())
        m_camera.StopGrabbing();
    m_camera.MaxNumBuffer.SetValue(m_maxNumBuffer);
    const auto count = static_cast<std::size_t>(std::max(m_maxNumBuffer, 0));
    while (m_images.size() < count)
        m_images.emplace_back();
}

void PylonCamera::StartGrabbing(int count) {
    if (count < 1)
        throw CameraError("A grab is of one image at least");
    WithCameraErrors([&] {
        PrepareGrab();
        m_camera.StartGrabbing(static_cast<std::size_t>(count), Pylon::GrabStrategy_LatestImages,
                               Pylon::GrabLoop_ProvidedByUser);
    });
}

bool PylonCamera::IsGrabbing() const {
    return Answer([this] { return m_camera.IsGrabbing(); });
}

PylonCamera::Image& PylonCamera::FreeImage() {
    const auto image = std::ranges::find_if(m_images, [](const Image& held) { return !held.IsValid(); });
    if (image == m_images.end())
        throw CameraError("All image buffers of the camera are held");
    return *image;
}

bool PylonCamera::WaitForImage(Image& image, std::uint32_t timeoutMilliseconds) {
    std::uint32_t left = timeoutMilliseconds;
    while (left > longestWait && m_camera.IsGrabbing()) {
        if (m_camera.RetrieveResult(longestWait, image, Pylon::TimeoutHandling_Return))
            return true;
        RequireNotRemoved();
        if (timeoutMilliseconds != waitWithoutLimit)
            left -= longestWait;
    }
    return m_camera.RetrieveResult(std::min(left, longestWait), image, Pylon::TimeoutHandling_ThrowException);
}

/// A grab that failed is ended: a camera that grabs lets few of its features be set.
GrabResult PylonCamera::RetrieveResult(std::uint32_t timeoutMilliseconds) {
    return WithCameraErrors([&] {
        if (!m_camera.IsGrabbing())
            throw CameraError("No grab is under way");
        Image& image = FreeImage();
        try {
            if (!WaitForImage(image, timeoutMilliseconds) || !image.IsValid())
                throw CameraError("The camera sent no image");
            return GrabResult(Describe(image), this, &image);
        } catch (const Pylon::TimeoutException&) {
            throw; // the image may still come
        } catch (...) {
            image.Release();
            m_camera.StopGrabbing();
            throw;
        }
    });
}

/// The vendor's call of this name does the same, but waits in one piece.
GrabResult PylonCamera::GrabOne(std::uint32_t timeoutMilliseconds) {
    WithCameraErrors([this] {
        PrepareGrab();
        m_camera.StartGrabbing(1, Pylon::GrabStrategy_OneByOne, Pylon::GrabLoop_ProvidedByUser);
    });
    try {
        return RetrieveResult(timeoutMilliseconds);
    } catch (...) {
        m_camera.StopGrabbing();
        throw;
    }
}

/// The samples that `image` shares; throws when they are not those of the mosaic, one byte each without gaps,
/// or of another size than the camera was set to.
GrabResult::Image PylonCamera::Describe(const Image& image) const {
    if (!image->GrabSucceeded())
        return {};
    const std::size_t width = image->GetWidth();
    const std::size_t height = image->GetHeight();
    if (image->GetPixelType() != Pylon::PixelType_BayerRG8 || image->GetPaddingX() != 0)
        throw CameraError("The camera sent an image that is not BayerRG8");
    if (!std::cmp_equal(width, m_width) || !std::cmp_equal(height, m_height))
        throw CameraError("The camera sent an image of another size than it was set to");
    if (image->GetBuffer() == nullptr || width * height == 0 || image->GetPayloadSize() < width * height)
        throw CameraError("The camera sent less than a whole image");
    return {true,
            static_cast<int>(width),
            static_cast<int>(height),
            {static_cast<const std::uint8_t*>(image->GetBuffer()), width * height}};
}

void PylonCamera::RegisterConfiguration(Acquisition acquisition) {
    WithCameraErrors([&] {
        RequireOpen();
        if (acquisition == Acquisition::SingleFrame)
            Configure<Pylon::CAcquireSingleFrameConfiguration>(m_camera);
        else
            Configure<Pylon::CAcquireContinuousConfiguration>(m_camera);
    });
}

void PylonCamera::Release(void* buffer) noexcept {
    static_cast<Image*>(buffer)->Release();
}

} // namespace tessaro
