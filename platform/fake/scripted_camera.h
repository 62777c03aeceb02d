#pragma once

#include "platform/camera_device.h"

#include <algorithm>
#include <concepts>
#include <cstdlib>
#include <deque>
#include <functional>
#include <iostream>
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
    ~ScriptedCamera() override {
        if (StepsLeft() != 0)
            m_onBreach(std::to_string(StepsLeft()) + " steps of the camera's script are left");
        if (!m_faults.empty())
            m_onBreach("never called: " + m_faults.begin()->first);
        if (held != 0)
            m_onBreach(std::to_string(held) + " images were not handed back");
    }

    /// The script of RetrieveResult and GrabOne, step by step.
    void ThenImage(int width, int height, Samples samples) {
        m_script.push_back({Step::Kind::Image, width, height, std::move(samples), {}});
    }
    void ThenBrokenImage() { m_script.push_back({Step::Kind::Broken, 0, 0, {}, {}}); }
    void ThenFault(const std::string& text) { m_script.push_back({Step::Kind::Fault, 0, 0, {}, text}); }
    void ThenNothing() { m_script.push_back({Step::Kind::Nothing, 0, 0, {}, {}}); }

    /// The next such call, as it is remembered, throws CameraError.
    void FailAt(const std::string& call) { ++m_faults[call]; }

    std::size_t StepsLeft() const { return m_script.size() - m_nextStep; }

    void Initialize() override { Note("Initialize"); }
    std::unique_ptr<CameraDevice> CreateFirstDevice() override {
        Note("CreateFirstDevice");
        if (!present)
            throw CameraError("no camera");
        return std::make_unique<Device>(*this);
    }

    /// What was in the buffer is gone.
    void Release(void* buffer) noexcept override {
        Samples& samples = static_cast<Step*>(buffer)->samples;
        std::fill(samples.begin(), samples.end(), released);
        --held;
    }

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

    class Device : public CameraDevice {
    public:
        explicit Device(ScriptedCamera& camera) : m_camera(camera) {}

        void Open() override {
            m_camera.Note("Open");
            m_open = true;
            m_toRetrieve = 0;
        }
        bool IsOpen() const override { return m_open && !m_camera.gone; }

        bool IsReadable(std::string_view feature) override {
            m_camera.CheckThere();
            const ScriptedFeature* found = Find(feature);
            return found != nullptr && found->readable;
        }
        bool IsWritable(std::string_view feature) override {
            m_camera.CheckThere();
            const ScriptedFeature* found = Find(feature);
            return found != nullptr && found->writable;
        }

        std::string GetEnumeration(std::string_view feature) override {
            return Read<ScriptedFeature::Enumeration>(feature).value;
        }
        void SetEnumeration(std::string_view feature, std::string_view value) override {
            m_camera.Note("Set", feature, value);
            auto& enumeration = Write<ScriptedFeature::Enumeration>(feature);
            const auto& settable = enumeration.settable;
            if (std::find(settable.begin(), settable.end(), value) == settable.end())
                throw CameraError(std::string(feature) + " cannot be " + std::string(value));
            enumeration.value = value;
            if (m_camera.onEnumerationSet)
                m_camera.onEnumerationSet(feature);
        }
        std::vector<std::string> SettableValues(std::string_view feature) override {
            return Read<ScriptedFeature::Enumeration>(feature).settable;
        }
        double GetFloat(std::string_view feature) override { return Read<double>(feature); }
        void SetFloat(std::string_view feature, double value) override {
            m_camera.Note("Set", feature, value);
            Write<double>(feature) = value;
        }
        std::int64_t GetInteger(std::string_view feature) override {
            return Read<ScriptedFeature::Integer>(feature).value;
        }
        void SetInteger(std::string_view feature, std::int64_t value) override {
            m_camera.Note("Set", feature, value);
            auto& integer = Write<ScriptedFeature::Integer>(feature);
            if (value < integer.range.minimum || value > integer.range.maximum)
                throw CameraError(std::string(feature) + " is out of range");
            integer.value = value;
        }
        IntegerRange GetIntegerRange(std::string_view feature) override {
            return Read<ScriptedFeature::Integer>(feature).range;
        }
        void SetBoolean(std::string_view feature, bool value) override {
            m_camera.Note("Set", feature, value ? "true" : "false");
            Write<bool>(feature) = value;
        }

        void SetMaxNumBuffer(int count) override {
            m_camera.Note("SetMaxNumBuffer", count);
            CheckOpen();
            m_camera.maximumHeld = count;
        }
        void StartGrabbing(int count) override {
            m_camera.Note("StartGrabbing", count);
            CheckOpen();
            if (count < 1)
                throw CameraError("a grab of no image");
            m_toRetrieve = count;
        }
        bool IsGrabbing() const override { return m_toRetrieve > 0; }
        GrabResult RetrieveResult(std::uint32_t timeoutMilliseconds) override {
            m_camera.Note("RetrieveResult", timeoutMilliseconds);
            if (m_toRetrieve <= 0)
                throw CameraError("no grab is under way");
            if (m_camera.NextIsFault())
                m_toRetrieve = 0;
            GrabResult result = m_camera.NextImage(timeoutMilliseconds);
            --m_toRetrieve;
            return result;
        }
        GrabResult GrabOne(std::uint32_t timeoutMilliseconds) override {
            m_camera.Note("GrabOne", timeoutMilliseconds);
            CheckOpen();
            m_toRetrieve = 0;
            return m_camera.NextImage(timeoutMilliseconds);
        }
        void RegisterConfiguration(Acquisition acquisition) override {
            m_camera.Note("RegisterConfiguration",
                          acquisition == Acquisition::SingleFrame ? "single frame" : "continuous");
            CheckOpen();
        }

    private:
        void CheckOpen() const {
            if (!m_open)
                throw CameraError("the camera is not open");
        }

        ScriptedFeature* Find(std::string_view feature) {
            const auto found = m_camera.features.find(feature);
            const bool known = m_open && found != m_camera.features.end();
            return known ? &found->second : nullptr;
        }

        template<class Value>
        Value& Read(std::string_view feature) {
            if (!IsReadable(feature))
                throw CameraError(std::string(feature) + " cannot be read");
            return Get<Value>(feature);
        }
        template<class Value>
        Value& Write(std::string_view feature) {
            if (!IsWritable(feature))
                throw CameraError(std::string(feature) + " cannot be written");
            return Get<Value>(feature);
        }
        template<class Value>
        Value& Get(std::string_view feature) {
            if (auto* value = std::get_if<Value>(&Find(feature)->value))
                return *value;
            throw CameraError(std::string(feature) + " is of another kind");
        }

        ScriptedCamera& m_camera;
        bool m_open = false;
        int m_toRetrieve = 0;
    };

    static void EndProgram(const std::string& breach) {
        std::cerr << "scripted camera: " << breach << '\n';
        std::abort();
    }

    static std::string Text(std::string_view text) { return std::string(text); }
    static std::string Text(double value) { return std::to_string(value); }
    template<std::integral Number>
    static std::string Text(Number value) {
        return std::to_string(value);
    }

    void CheckThere() const {
        if (gone)
            throw CameraError("the camera does not answer");
    }

    template<class... Words>
    void Note(std::string_view call, const Words&... words) {
        CheckThere();
        if (!remembersCalls)
            return;
        std::string text(call);
        ((text += " " + Text(words)), ...);
        calls.push_back(text);
        if (onCall)
            onCall(text);
        const auto fault = m_faults.find(text);
        if (fault == m_faults.end())
            return;
        if (--fault->second == 0)
            m_faults.erase(fault);
        throw CameraError("fault at " + text);
    }

    bool NextIsFault() const { return StepsLeft() != 0 && m_script[m_nextStep].kind == Step::Kind::Fault; }

    GrabResult NextImage(std::uint32_t timeoutMilliseconds) {
        if (StepsLeft() == 0) {
            m_onBreach("an image that the script does not know");
            throw CameraError("the script is at its end");
        }
        Step& step = m_script[m_nextStep++];
        if (step.kind == Step::Kind::Fault)
            throw CameraError(step.text);
        if (step.kind == Step::Kind::Nothing) {
            if (timeoutMilliseconds == waitWithoutLimit)
                m_onBreach("a wait that never ends");
            throw CameraError("no image came in time");
        }
        if (++held > maximumHeld)
            m_onBreach("more images are held than the camera has buffers");
        return {{step.kind == Step::Kind::Image, step.width, step.height, step.samples}, this, &step};
    }

    OnBreach m_onBreach;
    std::deque<Step> m_script; // a step stays where it is: results refer to it
    std::size_t m_nextStep = 0;
    std::map<std::string, int> m_faults;
};

} // namespace tessaro
