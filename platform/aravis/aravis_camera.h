#pragma once

#include "platform/aravis/aravis_connection.h"
#include "platform/aravis/camera_search.h"
#include "platform/camera_device.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace tessaro {

/// One camera, open or not.
class AravisCamera final : public CameraDevice, private GrabResult::BufferOwner {
public:
    explicit AravisCamera(CameraSearch search);
    ~AravisCamera() override;

    void Open() override;
    bool IsOpen() const override;
    bool IsReadable(std::string_view feature) override;
    bool IsWritable(std::string_view feature) override;
    std::string GetEnumeration(std::string_view feature) override;
    void SetEnumeration(std::string_view feature, std::string_view value) override;
    std::vector<std::string> SettableValues(std::string_view feature) override;
    double GetFloat(std::string_view feature) override;
    void SetFloat(std::string_view feature, double value) override;
    std::int64_t GetInteger(std::string_view feature) override;
    void SetInteger(std::string_view feature, std::int64_t value) override;
    IntegerRange GetIntegerRange(std::string_view feature) override;
    void SetBoolean(std::string_view feature, bool value) override;
    void SetMaxNumBuffer(int count) override;
    void StartGrabbing(int count) override;
    bool IsGrabbing() const override { return m_remaining > 0; }
    GrabResult RetrieveResult(std::uint32_t timeoutMilliseconds) override;
    GrabResult GrabOne(std::uint32_t timeoutMilliseconds) override;
    void RegisterConfiguration(Acquisition acquisition) override;

private:
    void Release(void* buffer) noexcept override;

    /// `use(AravisConnection&)`; lets go of a camera that turns out to be lost.
    template<typename Use>
    auto Connected(Use use);
    template<typename Call>
    auto OnDevice(Call call);
    /// The same; ends the grab when it fails.
    template<typename Use>
    auto OrEndGrab(Use use);
    /// False for a camera that is not open, and one that has no such feature.
    template<typename Question>
    bool Answers(Question question);
    void LetGo() noexcept;
    void ForgetTornDown();
    void WaitForTearDown(std::chrono::steady_clock::time_point limit);
    void CheckThatNobodyControls(std::uint32_t address, std::chrono::steady_clock::time_point limit);
    void Connect(const CameraPlace& place, std::chrono::steady_clock::time_point limit);

    /// Null when none comes in time.
    ArvBuffer* WaitForImage(AravisConnection& connection, std::uint32_t timeoutMilliseconds);
    GrabResult Deliver(AravisConnection& connection, ArvBuffer* buffer);
    void CountRetrieved(AravisConnection& connection);
    void EndGrab(AravisConnection& connection);

    CameraSearch m_search;
    std::unique_ptr<AravisConnection> m_connection;
    std::vector<LibraryThread::Ending> m_tearingDown;
    std::string m_reason = "The camera is not open";
    bool m_wasLost = false; // and not found again
    int m_maxNumBuffer = 10;
    int m_remaining = 0;
    Acquisition m_acquisition = Acquisition::Continuous;
};

} // namespace tessaro
