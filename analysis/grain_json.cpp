#include "analysis/grain_json.h"

namespace tessaro {

void WriteGrainMembers(JsonWriter& json, const GrainReport& grain) {
    json.Member("grain", grain.grain);
    json.Member("reducedPixels", grain.reducedPixels);
    json.Member("pixels", grain.pixels);
    json.Member("left", grain.left);
    json.Member("right", grain.right);
    json.Member("minRow", grain.minRow);
    json.Member("maxRow", grain.maxRow);
    json.Member("score", double{grain.score});
    json.Member("BG", double{grain.subScores.BG});
    json.Member("Cont", double{grain.subScores.Cont});
    json.Member("Size", double{grain.subScores.Size});
    json.Member("EgSp", double{grain.subScores.EgSp});
    json.Member("PR", double{grain.subScores.PR});
    json.Member("HST", double{grain.subScores.HST});
    json.Member("DfNx", double{grain.subScores.DfNx});
    json.Member("single", grain.single);
}

} // namespace tessaro
