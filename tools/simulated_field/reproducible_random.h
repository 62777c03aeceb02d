#pragma once

#include <cstdint>

namespace tessaro {

/// Random numbers that are the same on every machine and compiler: SplitMix64, and only arithmetic whose
/// result IEEE 754 fixes to the last bit. (The distributions of <random> leave their method to the library.)
class ReproducibleRandom {
public:
    explicit ReproducibleRandom(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t Next() {
        m_state += 0x9E3779B97F4A7C15U;
        std::uint64_t word = m_state;
        word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9U;
        word = (word ^ (word >> 27)) * 0x94D049BB133111EBU;
        return word ^ (word >> 31);
    }

    /// 0 inclusive to 1 exclusive.
    double Uniform() { return static_cast<double>(Next() >> 11) * 0x1.0p-53; }

    double Between(double low, double high) { return low + (high - low) * Uniform(); }

    /// low to high, both inclusive.
    int WholeBetween(int low, int high) {
        return low + static_cast<int>(Uniform() * static_cast<double>(high - low + 1));
    }

    bool Chance(double probability) { return Uniform() < probability; }

    /// Mean 0, standard deviation 1, never beyond 6: the sum of twelve even 16-bit numbers, whose standard
    /// deviation is 65536 all but exactly (the variance of each is (65536^2 - 1) / 12).
    double Normal() {
        constexpr double meanOfSum = 12 * 65535 / 2.0;
        const std::uint32_t sum = SumOfQuarters(Next()) + SumOfQuarters(Next()) + SumOfQuarters(Next());
        return (static_cast<double>(sum) - meanOfSum) * 0x1.0p-16;
    }

private:
    static std::uint32_t SumOfQuarters(std::uint64_t word) {
        return static_cast<std::uint32_t>((word & 0xFFFF) + ((word >> 16) & 0xFFFF) +
                                          ((word >> 32) & 0xFFFF) + (word >> 48));
    }

    std::uint64_t m_state;
};

} // namespace tessaro
