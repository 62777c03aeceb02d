#pragma once

#include "analysis/field_analysis.h"

namespace tessaro {

/// Along which line, and from which side, an edge pixel was met. Names say which side of the pixel is inside.
enum class EdgeDirection {
    Left = 0,    // first pixel of a row: inside at larger x
    Right = 1,   // last pixel of a row: inside at smaller x
    LowRow = 2,  // first pixel of a column: inside at larger y
    HighRow = 3, // last pixel of a column: inside at smaller y
};

/// Sums of the normalised edge contrasts of red, green and blue.
struct EdgeSums {
    float sumA = 0.0F;
    float sumB = 0.0F;
    float sumC = 0.0F;
};

/// Scores the grains of one field, whose frame, background and settings must stay the same meanwhile.
class FlakeScorer {
public:
    explicit FlakeScorer(FieldAnalysis& field);

    /// Scores grain g, refined before and with edges computed at scale 4 before that: sets its marks in the
    /// pixel map, draws its four lines of labels, keeps the sub-scores in the findings and returns the sum of
    /// all but DfNx. Not a number when the grain has no edges or no inside.
    float Score(int g);

private:
    FieldAnalysis& m_field;
};

/// Adds the contrast, inside minus outside over three pixels each, of the edge pixel (x, y), which is in
/// neither; percent of the background with the target's sign, clamped, and scaled so that a full-strength
/// edge adds 10.
void EdgeContrast(const FieldAnalysis& field, int x, int y, EdgeDirection direction, EdgeSums& sums);

/// Clamps into -|target| .. |target|, then brings |target| to 10 where it is larger than 1.
void ClampEdgeContrast(float& value, float target);

/// Mean over the channels of |I - B| / B at (x, y), a fraction of the measured background.
float BackgroundDeviation(const FieldAnalysis& field, int x, int y);

/// Fraction of grain g's pixels that have an unmarked neighbour, painting each of them black; dfNx becomes 10
/// minus the mean step from the others to their neighbours at larger x and y, all channels added.
float InteriorTexture(FieldAnalysis& field, int g, float& dfNx);

/// Mean over three passes of the deviation of grain g's intensities. Each pass takes the deviations of the
/// next channel around the mean of one channel: green around red, blue around green, and blue around blue.
/// Meant so.
float ColourSpread(const FieldAnalysis& field, int g);

} // namespace tessaro
