#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tessaro {

/// One field as the scan has finished it. What was found in it is in the analysis' own records until the next
/// one.
struct ScannedField {
    std::int32_t row = 0;
    std::int32_t column = 0;
    std::array<double, 3> position = {}; // [X, Y, Z], um, where the stage stood when its image was taken
};

enum class ScanEnd {
    Completed,   // all fields of the area, or none where there are none
    Stopped,     // by the operator, or because the program ends
    FocusFailed, // a place that the tilt is measured at could not be focused: no field was scanned
    Interrupted  // another scan that was started inside this one has ended, or a search for the focus failed
};

/// Told how scans go. A scan may run inside another.
class ScanListener {
public:
    virtual ~ScanListener() = default;

    virtual void ScanBegins() = 0;
    virtual void FieldBegins() {} // before its image is taken
    virtual void FieldFinished(const ScannedField& field) = 0;
    virtual void ScanEnds(ScanEnd why) = 0; // after the stage's way back to the origin

    /// One that the program was to run by itself. Not everybody wants to know.
    virtual void ScanNotBegun([[maybe_unused]] const std::vector<std::string>& reasons) {}
};

} // namespace tessaro
