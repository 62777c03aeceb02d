#include "twin/operator_view.h"
#include "twin/sensor_renderer.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessaro {
namespace {

void MakeWafer(benchmark::State& state) {
    WaferOptions options;
    options.sideMm = static_cast<double>(state.range(0));
    for ([[maybe_unused]] auto turn : state)
        benchmark::DoNotOptimize(Wafer(options));
}
BENCHMARK(MakeWafer)->Arg(4)->Arg(10)->Unit(benchmark::kMillisecond);

void FrameAtRest(benchmark::State& state) {
    const Wafer wafer{WaferOptions()};
    SensorRenderer renderer(wafer);
    std::vector<std::uint8_t> mosaic(twinMosaicBytes);
    std::uint64_t noiseSeed = 0;
    for ([[maybe_unused]] auto turn : state)
        renderer.Render({2000.0, 2000.0, 0.0}, {}, ++noiseSeed, mosaic);
}
BENCHMARK(FrameAtRest)->Unit(benchmark::kMillisecond);

/// Every frame at another place; the argument is the distance from the focus in tenths of a micrometre.
void FrameInMotion(benchmark::State& state) {
    const Wafer wafer{WaferOptions()};
    SensorRenderer renderer(wafer);
    std::vector<std::uint8_t> mosaic(twinMosaicBytes);
    const double z = static_cast<double>(state.range(0)) / 10.0;
    double x = 1000.0;
    for ([[maybe_unused]] auto turn : state)
        renderer.Render({x += 0.5, 2000.0, z}, {}, 1, mosaic);
}
BENCHMARK(FrameInMotion)
    ->Arg(0)
    ->Arg(10)
    ->Arg(50)
    ->Arg(60)
    ->Arg(200)
    ->Arg(10'000)
    ->Unit(benchmark::kMillisecond);

/// Every frame at another place in focus; the argument is the tilt along X and Y, in um per mm.
void TiltedFrame(benchmark::State& state) {
    WaferOptions options;
    const double tilt = static_cast<double>(state.range(0)) / 1000.0;
    options.tiltUmPerUm = {tilt, tilt};
    const Wafer wafer{options};
    SensorRenderer renderer(wafer);
    std::vector<std::uint8_t> mosaic(twinMosaicBytes);
    double x = 1000.0;
    for ([[maybe_unused]] auto turn : state) {
        x += 0.5;
        renderer.Render({x, 2000.0, wafer.FocusZ(x, 2000.0)}, {}, 1, mosaic);
    }
}
BENCHMARK(TiltedFrame)->Arg(2)->Arg(5)->Arg(10)->Arg(50)->Arg(1000)->Unit(benchmark::kMillisecond);

/// The stage goes at 1500 um/s; the argument is the exposure time in ms.
void SmearedFrame(benchmark::State& state) {
    const Wafer wafer{WaferOptions()};
    SensorRenderer renderer(wafer);
    std::vector<std::uint8_t> mosaic(twinMosaicBytes);
    double begin = 0.0;
    for ([[maybe_unused]] auto turn : state) {
        const ExposureWay way =
            WayDuring(begin += 0.001, static_cast<double>(state.range(0)) / 1000.0, [](double time) {
                return StagePosition{1000.0 + 1500.0 * time, 2000.0, 0.0};
            });
        renderer.Render(way, {}, 1, mosaic);
    }
}
BENCHMARK(SmearedFrame)->Arg(1)->Arg(3)->Arg(5)->Arg(6)->Arg(10)->Arg(40)->Unit(benchmark::kMillisecond);

/// What a frame at rest at least costs: its bytes are written once.
void OneWriteOfTheMosaic(benchmark::State& state) {
    std::vector<std::uint8_t> mosaic(twinMosaicBytes);
    std::uint8_t level = 0;
    for ([[maybe_unused]] auto turn : state) {
        mosaic.assign(twinMosaicBytes, ++level);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(OneWriteOfTheMosaic)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tessaro

BENCHMARK_MAIN();
