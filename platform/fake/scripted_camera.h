#pragma once

#include "platform/camera_device.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tessaro {

/// A feature of a scripted camera; its kind is that of its value.
struct ScriptedFeature {
    struct Enumeration {
        std::string value;
        std::vector<std::string> settable;
    };
    struct Integer {
        std::int64_t value = 0;
        IntegerRange range;
    };

    std::variant<Enumeration, double, Integer, bool> value;
    bool readable = true;
    bool writable = true;
};

/// A runtime with one camera whose images and faults are written down in advance. What the script does not
/// know is a breach; so is a script that was not finished, or an image that was not handed back, when the
/// camera goes. It outlives the devices that it made.
class ScriptedCamera : public CameraRuntime, public GrabResult::BufferOwner {
public:
    using Samples = std::vector<std::uint8_t>;

    /// A test gives ADD_FAILURE here; by default a breach ends the program.
    using OnBreach = std::function<void(const std::string&)>;

    explicit ScriptedCamera(OnBreach onBreach = EndProgram) : m_onBreach(std::move(onBreach)) {}
    ScriptedCamera(const ScriptedCamera&) = delete;
    ScriptedCamera& operator=(const ScriptedCamera&) = delete;
    ~ScriptedCamera() override;

    /// The script of RetrieveResult and GrabOne, step by step.
    void ThenImage(int width, int height, Samples samples);
    void ThenBrokenImage() { m_script.push_back({Step::Kind::Broken, 0, 0, {}, {}}); }
    void ThenFault(const std::string& text) { m_script.push_back({Step::Kind::Fault, 0, 0, {}, text}); }
    void ThenNothing() { m_script.push_back({Step::Kind::Nothing, 0, 0, {}, {}}); }

    /// The next such call, as it is remembered, throws CameraError.
    void FailAt(const std::string& call) { ++m_faults[call]; }

    std::size_t StepsLeft() const { return m_script.size() - m_nextStep; }

    void Initialize() override;
    std::unique_ptr<CameraDevice> CreateFirstDevice() override;

    /// What was in the buffer is gone.
    void Release(void* buffer) noexcept override;

    static constexpr std::uint8_t released = 0xDD;

    bool present = true; // a runtime finds it
    bool gone = false;   // it does not answer any more
    std::map<std::string, ScriptedFeature, std::less<>> features;
    std::vector<std::string> calls; // all that do something, with what they were told
    bool remembersCalls = true;
    std::function<void(const std::string&)> onCall;         // after it was noted, before it is done
    std::function<void(std::string_view)> onEnumerationSet; // after it was done
    int held = 0;                                           // images that were not handed back yet
    int maximumHeld = 10;

private:
    struct Step {
        enum class Kind { Image, Broken, Fault, Nothing };
        Kind kind = Kind::Nothing;
        int width = 0;
        int height = 0;
        Samples samples;
        std::string text;
    };

    class Device;

    static void EndProgram(const std::string& breach);
    void CheckThere() const;
    template<class... Words>
    void Note(std::string_view call, const Words&... words);
    bool NextIsFault() const;
    GrabResult NextImage(std::uint32_t timeoutMilliseconds);

    OnBreach m_onBreach;
    std::deque<Step> m_script; // a step stays where it is: results refer to it
    std::size_t m_nextStep = 0;
    std::map<std::string, int> m_faults;
};

} // namespace tessaro
