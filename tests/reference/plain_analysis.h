#pragma once

#include "analysis/flake_analyzer.h"
#include "analysis/frame_measurements.h"
#include "analysis/grain.h"
#include "analysis/status_sink.h"
#include "app/settings.h"
#include "imaging/frame_buffer.h"
#include "platform/drawing_surface.h"

#include <cstdint>
#include <string>

/// The analysis written down as slowly and as literally as it can be said: every neighbour is searched for,
/// every pixel is read again. Nothing here is meant to be fast; the program's own analysis is held equal to
/// it bit for bit, so no step may be reordered and no intermediate value may be wider than single precision
/// where it is float.
namespace tessaro::reference {

/// Everything the plain analysis works on: the program's data types with operations of its own. About 19 MB:
/// heap only.
struct PlainAnalysis {
    Settings settings;
    FrameRecord frame;
    FrameMeasurements measured;
    FlakeAnalyzer analyzer;
    GrainTable grains = {};
    GrainFindings findings;
    DrawingSurface* surface = nullptr; // not owned; null draws nothing
    StatusSink* status = nullptr;      // not owned; null tells nobody
};

// Pixel access. Channels: 0 red, 1 green, any other blue.

std::uint8_t GetChannel(const FrameRecord& frame, int channel, int x, int y);
int ClampInt(int& value, int low, int high);

/// Whole-number mean of (x, y) .. (x + n - 1, y); n must not be 0.
int AverageAlongX(const FrameRecord& frame, int channel, int x, int y, int n);

/// Whole-number mean of (x, y) .. (x, y + n - 1); n must not be 0.
int AverageAlongY(const FrameRecord& frame, int channel, int x, int y, int n);

// Statistics of a frame.

/// Measures the argument, whose peaks are written, and the noise of the current frame, which may be another
/// record.
int ComputeFrameStatistics(PlainAnalysis& analysis, FrameRecord& frame);

// Background model. Channels: 0 red, 1 green, 2 blue; parameters 0 to 4 as in BackgroundModel.

double ModelValue(const PlainAnalysis& analysis, int channel, int gx, int gy);
double ModelError(const PlainAnalysis& analysis, int channel);
void LineSearchParameter(PlainAnalysis& analysis, int channel, int parameter);
void FitBackgroundModel(PlainAnalysis& analysis);
void ResetBackgroundModel(PlainAnalysis& analysis);

/// Fills `view`, a buffer in the FrameBuffer layout, from the fitted grid when `fitted` is not 0, else from
/// the measured one. Returns 1.
int PaintBackground(const PlainAnalysis& analysis, std::uint8_t* view, int fitted);

// Contrast tests: 1 matches the target, -1 differs from background and target (reduced pixels only), 0
// background.

float InterpolateBackground(const PlainAnalysis& analysis, int channel, int x4, int y4);
int ClassifyReducedPixel(const PlainAnalysis& analysis, int x4, int y4);
int ClassifyReducedPixelByBlock(const PlainAnalysis& analysis, int x4, int y4);
int ClassifyPixel(const PlainAnalysis& analysis, int x, int y);
int ClassifyPixelByBlock(const PlainAnalysis& analysis, int x, int y);

/// The test of full-resolution pixels that useInterpolatedBackground selects.
int ClassifySelected(const PlainAnalysis& analysis, int x, int y);

// Candidates.

void FindCandidates(PlainAnalysis& analysis, bool paint);
void RejectNoise(PlainAnalysis& analysis);

// Grains.

/// Reduced pixels of an area in um^2, and full-resolution pixels of it.
int MinimumReducedPixels(int area);
int MinimumFullPixels(int area);

void GroupCandidates(PlainAnalysis& analysis, const Candidate* candidates, int candidateCount,
                     GrainTable& grains, std::int32_t& groupCount, int minSize, int maxSize);
void MergeIfTouching(Grain& grainA, Grain& grainB);
void AppendGrain(Grain& grainA, Grain& grainB);

void GrainExtremes(const Grain& grain, int scale, PixelPosition& left, PixelPosition& right,
                   PixelPosition& minRow, PixelPosition& maxRow);
void ComputeGrainEdges(const GrainTable& grains, int groupCount, GrainEdges& edges);

/// The box that the extreme points of one grain span.
struct GrainBox {
    int x0 = 0;
    int y0 = 0;
    int width = 0;
    int height = 0;
};
GrainBox BoxOfGrain(const GrainEdges& edges, int g);

int LargestGrain(const GrainTable& grains, int count);

/// True when grain g of the analysis still has pixels afterwards.
bool RefineGrain(PlainAnalysis& analysis, int g);

// Scores.

/// Directions: 0 left edge of a row, 1 its right edge, 2 low-row edge of a column, 3 its high-row edge.
void EdgeContrast(const PlainAnalysis& analysis, int x, int y, int direction, float& sumA, float& sumB,
                  float& sumC);
void ClampEdgeContrast(float& value, float target);

/// A fraction, not percent.
float BackgroundDeviation(const PlainAnalysis& analysis, int x, int y);

/// The fraction of grain g's pixels that are boundary; these are painted black.
float InteriorTexture(PlainAnalysis& analysis, int g, float& DfNx);
float ColourSpread(const PlainAnalysis& analysis, int g);

/// Draws the four labels of grain g, keeps its sub-scores in the findings and returns its score.
float FlakeScore(PlainAnalysis& analysis, int g);

/// Returns the number of single layers of the field.
int DecideSingleLayers(PlainAnalysis& analysis);

/// A number as it stands in a label: rounded to a whole number, or "nan", "inf", "-inf".
std::string LabelNumber(float value);

} // namespace tessaro::reference
