#include "platform/qt/netpbm_reader.h"

#include "platform/qt/picture_structure.h"

#include <optional>
#include <string_view>
#include <utility>

namespace tessaro {

namespace {

constexpr std::string_view format = "PPM";
constexpr std::uint32_t largestMaximum = 65535;
constexpr std::uint32_t largestNumber = 1'000'000'000;

bool IsSpace(std::uint8_t byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}
bool IsDigit(std::uint8_t byte) {
    return byte >= '0' && byte <= '9';
}

class NetpbmReader {
public:
    explicit NetpbmReader(std::span<const std::uint8_t> file)
        : m_file(file), m_plain(file[1] <= '3'), m_bitmap(file[1] == '1' || file[1] == '4'),
          m_channels(file[1] == '3' || file[1] == '6' ? 3 : 1) {}

    std::variant<Picture, PictureError> Read() {
        const auto width = Number();
        const auto height = Number();
        m_maximum = m_bitmap ? 1 : Number().value_or(0);
        // One space parts the header from the data: the next ones could be pixels.
        const bool parted = m_position < m_file.size() && IsSpace(m_file[m_position]);
        if (!width || !height || !parted)
            return m_position >= m_file.size() ? CutShort(format) : Damaged(format);
        ++m_position;
        if (m_maximum == 0 || m_maximum > largestMaximum)
            return Damaged(format);
        if (auto fault = FindSizeFault(*width, *height))
            return *fault;
        m_width = static_cast<int>(*width);
        m_height = static_cast<int>(*height);
        if (m_file.size() - m_position < LeastDataBytes())
            return CutShort(format);
        return ReadPixels();
    }

private:
    bool Wide() const { return m_maximum > 255; }

    std::size_t LeastDataBytes() const {
        const auto columns = static_cast<std::size_t>(m_width);
        const auto rows = static_cast<std::size_t>(m_height);
        const std::size_t samples = columns * rows * m_channels;
        if (m_plain)
            return m_bitmap ? samples : 2 * samples;
        return m_bitmap ? (columns + 7) / 8 * rows : samples * (Wide() ? 2 : 1);
    }

    std::variant<Picture, PictureError> ReadPixels() {
        Picture picture(m_width, m_height);
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x < m_width; ++x) {
                std::uint32_t sample[3] = {};
                for (std::size_t channel = 0; channel < m_channels; ++channel) {
                    const auto read = Sample(x);
                    if (!read)
                        return m_position >= m_file.size() ? CutShort(format) : Damaged(format);
                    if (*read > m_maximum)
                        return Damaged(format);
                    sample[channel] = (*read * 255 + m_maximum / 2) / m_maximum;
                }
                std::uint8_t* pixel = picture.Pixel(x, y);
                pixel[0] = static_cast<std::uint8_t>(sample[m_channels == 3 ? 2 : 0]);
                pixel[1] = static_cast<std::uint8_t>(sample[m_channels == 3 ? 1 : 0]);
                pixel[2] = static_cast<std::uint8_t>(sample[0]);
                pixel[3] = 255;
            }
            if (m_bitmap && !m_plain)
                m_position += (static_cast<std::size_t>(m_width) + 7) / 8;
        }
        return picture;
    }

    /// The next sample of the row; its column matters only where pixels are packed into bytes.
    std::optional<std::uint32_t> Sample(int x) {
        if (m_plain)
            return m_bitmap ? PlainBit() : PlainSample();
        if (m_bitmap) {
            const std::uint8_t eight = m_file[m_position + static_cast<std::size_t>(x) / 8];
            return 1u - (eight >> (7 - x % 8) & 1u); // a set bit is black
        }
        const std::uint32_t first = m_file[m_position++];
        return Wide() ? first << 8 | m_file[m_position++] : first;
    }

    /// Plain pixels of a bitmap need no space between them.
    std::optional<std::uint32_t> PlainBit() {
        SkipSpace();
        if (m_position >= m_file.size() || (m_file[m_position] != '0' && m_file[m_position] != '1'))
            return std::nullopt;
        return m_file[m_position++] == '0' ? 1 : 0;
    }

    /// A number that the end of the file follows may have lost digits.
    std::optional<std::uint32_t> PlainSample() {
        const auto number = Number();
        return m_position < m_file.size() ? number : std::nullopt;
    }

    std::optional<std::uint32_t> Number() {
        SkipSpace();
        if (m_position >= m_file.size() || !IsDigit(m_file[m_position]))
            return std::nullopt;
        std::uint32_t number = 0;
        while (m_position < m_file.size() && IsDigit(m_file[m_position])) {
            number = number * 10 + (m_file[m_position++] - std::uint32_t{'0'});
            if (number > largestNumber / 10)
                return std::nullopt;
        }
        return number;
    }

    void SkipSpace() {
        while (m_position < m_file.size() && (IsSpace(m_file[m_position]) || m_file[m_position] == '#')) {
            if (m_file[m_position] == '#')
                while (m_position < m_file.size() && m_file[m_position] != '\n' && m_file[m_position] != '\r')
                    ++m_position;
            else
                ++m_position;
        }
    }

    std::span<const std::uint8_t> m_file;
    std::size_t m_position = 2;
    bool m_plain;
    bool m_bitmap;
    std::size_t m_channels;
    std::uint32_t m_maximum = 0;
    int m_width = 0;
    int m_height = 0;
};

} // namespace

std::variant<Picture, PictureError> ReadNetpbm(std::span<const std::uint8_t> file) {
    return NetpbmReader(file).Read();
}

} // namespace tessaro
