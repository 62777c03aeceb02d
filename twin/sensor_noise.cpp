#include "twin/sensor_noise.h"

#include "simulated_field/reproducible_random.h"

#include <algorithm>
#include <cmath>

namespace tessaro {
namespace {

constexpr std::uint64_t tableSeed = 1;

} // namespace

NoiseTable::NoiseTable() {
    ReproducibleRandom random(tableSeed);
    std::vector<double> numbers(places);
    double sum = 0.0;
    for (double& number : numbers)
        sum += number = random.Normal();
    double squares = 0.0;
    for (double& number : numbers) {
        number -= sum / static_cast<double>(places);
        squares += number * number;
    }
    const double scale = 1.0 / std::sqrt(squares / static_cast<double>(places));
    for (std::size_t place = 0; place < places + longestPiece; ++place)
        m_numbers.push_back(static_cast<float>(numbers[place % places] * scale));
}

void ExposeRow(std::span<const float> light, const SensorResponse& response, const float* noise,
               std::uint8_t* levels) {
    constexpr float half = 0.5F; // truncating rounds then
    constexpr float brightest = 255.0F;
    const SensorResponse fixed = response; // the levels may not lie in it, which the compiler cannot know
    for (std::size_t sample = 0; sample < light.size(); ++sample) {
        const float level = light[sample] * fixed.level;
        const float deviation = std::sqrt(level * fixed.variancePerLevel + fixed.readVariance);
        const float noisy = level + deviation * noise[sample] + half;
        levels[sample] =
            static_cast<std::uint8_t>(static_cast<int>(std::min(std::max(noisy, 0.0F), brightest)));
    }
}

} // namespace tessaro
