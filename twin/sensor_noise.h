#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tessaro {

/// How a channel's samples answer light: the level of light 1 and the variance of the noise, which is the
/// photons' and grows with the level, and the read-out's.
struct SensorResponse {
    float level = 0.0F;
    float variancePerLevel = 0.0F;
    float readVariance = 0.0F;
};

/// A long row of normal random numbers, mean 0 and deviation 1, which frames take pieces of.
class NoiseTable {
public:
    NoiseTable();

    /// `count` numbers, at most longestPiece, from a place that the random word picks.
    const float* Piece(std::uint64_t word) const { return m_numbers.data() + (word & (places - 1)); }

    static constexpr std::size_t longestPiece = 4096;

private:
    static constexpr std::size_t places = std::size_t{1} << 16U;
    std::vector<float> m_numbers;
};

/// The levels 0 to 255 of one row of light; `noise` has as many numbers.
void ExposeRow(std::span<const float> light, const SensorResponse& response, const float* noise,
               std::uint8_t* levels);

} // namespace tessaro
