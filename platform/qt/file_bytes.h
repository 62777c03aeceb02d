#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tessaro {

/// Numbers read from a file in memory. Ask Holds before each read: offsets come from the file and may be
/// anything.
class FileBytes {
public:
    FileBytes(std::span<const std::uint8_t> file, std::endian order) : m_file(file), m_order(order) {}

    std::size_t Size() const { return m_file.size(); }
    bool Holds(std::uint64_t offset, std::uint64_t length) const {
        return length <= m_file.size() && offset <= m_file.size() - length;
    }

    std::uint8_t U8(std::uint64_t offset) const { return m_file[static_cast<std::size_t>(offset)]; }
    std::uint16_t U16(std::uint64_t offset) const { return static_cast<std::uint16_t>(Number(offset, 2)); }
    std::uint32_t U32(std::uint64_t offset) const { return static_cast<std::uint32_t>(Number(offset, 4)); }
    std::uint64_t U64(std::uint64_t offset) const { return Number(offset, 8); }
    std::int32_t I32(std::uint64_t offset) const { return static_cast<std::int32_t>(U32(offset)); }

private:
    std::uint64_t Number(std::uint64_t offset, int bytes) const {
        std::uint64_t number = 0;
        for (int i = 0; i < bytes; ++i) {
            const int place = m_order == std::endian::big ? bytes - 1 - i : i;
            number |= std::uint64_t{U8(offset + static_cast<std::uint64_t>(i))} << (8 * place);
        }
        return number;
    }

    std::span<const std::uint8_t> m_file;
    std::endian m_order;
};

} // namespace tessaro
