#include "analysis/candidates.h"
#include "analysis/decision.h"
#include "analysis/field_analysis.h"
#include "analysis/frame_statistics.h"
#include "analysis/grouping.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>

// Frames and settings made from the input, through the whole analysis, field after field with the state kept.

namespace tessaro {
namespace {

/// Takes the input apart; gives zeros when it has run out.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_end(data + size) {}

    bool Empty() const { return m_data == m_end; }
    int Byte() { return Empty() ? 0 : *m_data++; }
    int Below(int end) { return (Byte() * 256 + Byte()) % end; }

private:
    const std::uint8_t* m_data;
    const std::uint8_t* m_end;
};

class NullSurface : public DrawingSurface {
public:
    void SetPixel(int, int, Colour) override {}
    void DrawFrame(const SurfaceRectangle&, int, Colour) override {}
    void DrawText(std::string_view text, const SurfaceRectangle&, TextAlignment, Colour) override {
        if (text.empty())
            std::abort();
    }
};

void Paint(Input& input, FrameBuffer& frame) {
    const auto colour = [&] { return static_cast<std::uint8_t>(input.Byte()); };
    const auto rectangle = [&](int left, int low, int width, int height, int step) {
        const std::uint8_t redLevel = colour();
        const std::uint8_t greenLevel = colour();
        const std::uint8_t blueLevel = colour();
        for (int y = low; y < std::min(frameHeight, low + height); y += step) {
            for (int x = left; x < std::min(frameWidth, left + width); x += step)
                frame.SetPixel(x, y, redLevel, greenLevel, blueLevel);
        }
    };
    rectangle(0, 0, frameWidth, frameHeight, 1);
    const int shapes = input.Below(64);
    for (int shape = 0; shape < shapes && !input.Empty(); ++shape) {
        const int left = input.Below(frameWidth);
        const int low = input.Below(frameHeight);
        const int width = input.Below(frameWidth);
        const int height = input.Below(frameHeight);
        rectangle(left, low, width, height, 1 + input.Byte() % 6);
    }
}

/// A number of percent, or one of those that a settings line may hold although nobody means them.
float Percent(Input& input) {
    using Limits = std::numeric_limits<float>;
    constexpr std::array<float, 6> odd = {
        Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 3e38F, -3e38F, Limits::denorm_min()};
    const auto byte = static_cast<std::size_t>(input.Byte());
    return byte < odd.size() ? odd[byte] : static_cast<float>(byte) - 128;
}

Settings MakeSettings(Input& input) {
    const auto percent = [&] { return Percent(input); };
    Settings settings;
    settings.targetContrast = {percent(), percent(), percent()};
    settings.contrastTolerance = percent();
    settings.minimumFlakeArea = input.Below(4'000) - 100;
    settings.scoreThreshold = percent();
    return settings;
}

void Check(const FieldAnalysis& field) {
    if (field.analyzer.candidateCount < 0 || field.analyzer.candidateCount > candidateCapacity)
        std::abort();
    if (field.findings.groupCount < 0 || field.findings.groupCount > MAX_GRAIN)
        std::abort();
    for (const Grain& grain : field.grains.grains) {
        if (grain.count < 0 || grain.count > grainCapacity)
            std::abort();
    }
}

void Analyse(Input& input, FieldAnalysis& field) {
    ComputeFrameStatistics(field.frame, field.frame, field.measured);
    FindCandidates(field, true);
    RejectNoise(field.analyzer);
    GroupGrains(field);
    const int decisions = 1 + input.Byte() % 3; // again without grouping, as the menu allows
    for (int decision = 0; decision < decisions; ++decision) {
        DecideSingleLayers(field);
        Check(field);
    }
}

} // namespace
} // namespace tessaro

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessaro;
    static const auto memory = std::make_unique<AnalysisMemory>();
    Input input(data, size);
    NullSurface surface;
    FrameBuffer frame;
    const Settings settings = MakeSettings(input);
    FieldAnalysis field = memory->Bind(settings);
    field.surface = &surface;
    field.frame.pixels = frame.Data();
    field.analyzer.useInterpolatedBackground = input.Byte() % 4 == 0 ? 0 : 1;
    const int fields = 1 + input.Byte() % 2;
    for (int count = 0; count < fields; ++count) {
        Paint(input, frame);
        Analyse(input, field);
    }
    return 0;
}
