#include "platform/fake/scripted_camera.h"

#include <algorithm>
#include <concepts>
#include <cstdlib>
#include <iostream>

namespace tessaro {
namespace {

std::string Text(std::string_view text) {
    return std::string(text);
}
std::string Text(double value) {
    return std::to_string(value);
}
template<std::integral Number>
std::string Text(Number value) {
    return std::to_string(value);
}

} // namespace

void ScriptedCamera::CheckThere() const {
    if (gone)
        throw CameraError("the camera does not answer");
}

template<class... Words>
void ScriptedCamera::Note(std::string_view call, const Words&... words) {
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

class ScriptedCamera::Device : public CameraDevice {
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

ScriptedCamera::~ScriptedCamera() {
    if (StepsLeft() != 0)
        m_onBreach(std::to_string(StepsLeft()) + " steps of the camera's script are left");
    if (!m_faults.empty())
        m_onBreach("never called: " + m_faults.begin()->first);
    if (held != 0)
        m_onBreach(std::to_string(held) + " images were not handed back");
}

void ScriptedCamera::ThenImage(int width, int height, Samples samples) {
    m_script.push_back({Step::Kind::Image, width, height, std::move(samples), {}});
}

void ScriptedCamera::Initialize() {
    Note("Initialize");
}

std::unique_ptr<CameraDevice> ScriptedCamera::CreateFirstDevice() {
    Note("CreateFirstDevice");
    if (!present)
        throw CameraError("no camera");
    return std::make_unique<Device>(*this);
}

void ScriptedCamera::Release(void* buffer) noexcept {
    Samples& samples = static_cast<Step*>(buffer)->samples;
    std::fill(samples.begin(), samples.end(), released);
    --held;
}

void ScriptedCamera::EndProgram(const std::string& breach) {
    std::cerr << "scripted camera: " << breach << '\n';
    std::abort();
}

bool ScriptedCamera::NextIsFault() const {
    return StepsLeft() != 0 && m_script[m_nextStep].kind == Step::Kind::Fault;
}

GrabResult ScriptedCamera::NextImage(std::uint32_t timeoutMilliseconds) {
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

} // namespace tessaro
