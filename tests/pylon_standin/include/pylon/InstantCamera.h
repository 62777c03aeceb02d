#pragma once

#include <pylon/Parameter.h>
#include <pylon/PylonBase.h>

namespace Pylon {

enum EGrabStrategy {
    GrabStrategy_OneByOne,
    GrabStrategy_LatestImageOnly,
    GrabStrategy_LatestImages,
    GrabStrategy_UpcomingImage
};
enum EGrabLoop { GrabLoop_ProvidedByInstantCamera, GrabLoop_ProvidedByUser };
enum ETimeoutHandling { TimeoutHandling_Return, TimeoutHandling_ThrowException };
enum ERegistrationMode { RegistrationMode_Append, RegistrationMode_ReplaceAll };
enum ECleanup { Cleanup_None, Cleanup_Delete };

enum EPixelType : std::uint32_t { PixelType_Mono8, PixelType_BayerRG8, PixelType_BayerRG12 };

class CGrabResultData {
public:
    explicit CGrabResultData(tessaro::pylon_standin::Frame frame);
    CGrabResultData(const CGrabResultData&) = delete;
    CGrabResultData& operator=(const CGrabResultData&) = delete;
    ~CGrabResultData();

    bool GrabSucceeded() const;
    EPixelType GetPixelType() const;
    std::uint32_t GetWidth() const;
    std::uint32_t GetHeight() const;
    std::size_t GetPaddingX() const;
    void* GetBuffer() const;
    std::size_t GetPayloadSize() const;

private:
    std::unique_ptr<tessaro::pylon_standin::Frame> m_frame;
};

class CGrabResultPtr {
public:
    bool IsValid() const { return m_data != nullptr; }
    void Release() { m_data.reset(); }
    const CGrabResultData* operator->() const;

private:
    friend class CInstantCamera;
    std::shared_ptr<const CGrabResultData> m_data;
};

class CInstantCamera;

class CConfigurationEventHandler {
public:
    virtual ~CConfigurationEventHandler() = default;
    virtual void OnOpened(CInstantCamera& camera) = 0;
};

class CAcquireSingleFrameConfiguration : public CConfigurationEventHandler {
public:
    static void ApplyConfiguration(GenApi::INodeMap& nodeMap);
    void OnOpened(CInstantCamera& camera) override;
};

class CAcquireContinuousConfiguration : public CConfigurationEventHandler {
public:
    static void ApplyConfiguration(GenApi::INodeMap& nodeMap);
    void OnOpened(CInstantCamera& camera) override;
};

class CInstantCamera {
public:
    CInstantCamera();
    CInstantCamera(const CInstantCamera&) = delete;
    CInstantCamera& operator=(const CInstantCamera&) = delete;
    virtual ~CInstantCamera();

    void Attach(IPylonDevice* device, ECleanup cleanup);
    bool IsPylonDeviceAttached() const { return m_device != nullptr; }
    void DestroyDevice();
    bool IsCameraDeviceRemoved() const;

    void Open();
    bool IsOpen() const { return m_open; }
    GenApi::INodeMap& GetNodeMap();

    /// Like the vendor's, it opens the camera when it is not, refuses to start twice, and locks some
    /// features.
    void StartGrabbing(std::size_t count, EGrabStrategy strategy, EGrabLoop loop);
    void StopGrabbing();
    bool IsGrabbing() const { return m_left > 0; }
    bool RetrieveResult(unsigned int timeoutMs, CGrabResultPtr& result, ETimeoutHandling handling);

    void RegisterConfiguration(CConfigurationEventHandler* handler, ERegistrationMode mode, ECleanup cleanup);

    class BufferCount {
    public:
        explicit BufferCount(const CInstantCamera& camera) : m_camera(camera) {}
        void SetValue(std::int64_t value);
        std::int64_t GetValue() const { return m_value; }

    private:
        const CInstantCamera& m_camera;
        std::int64_t m_value = 10;
    };
    BufferCount MaxNumBuffer;

private:
    void CheckDevice() const;
    bool TakeFrame(CGrabResultPtr& result, ETimeoutHandling handling);
    void SetImagesLeft(std::size_t count);

    std::unique_ptr<IPylonDevice> m_device;
    std::unique_ptr<CConfigurationEventHandler> m_configuration;
    GenApi::INodeMap m_nodeMap;
    bool m_open = false;
    std::size_t m_left = 0; // images to retrieve
};

} // namespace Pylon
