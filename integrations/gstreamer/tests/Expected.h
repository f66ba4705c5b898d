// What a conversion has to give: calls of the portable functions on whole frames, without bands, threads or tables.
#ifndef KOR_GSTREAMER_TESTS_EXPECTED_H
#define KOR_GSTREAMER_TESTS_EXPECTED_H

#include "Conversions.h"
#include "Direction.h"
#include "Picture.h"

namespace korgst {

// Each row is a pair of formats with a matrix; written down anew, so that a row which the plugin lacks is noticed.
struct ExpectedPair {
    GstVideoFormat from;
    GstVideoFormat to;
    Matrix matrix;
};
std::vector<ExpectedPair> ExpectedPairs();

Picture Expected(const Picture& from, GstVideoFormat to, Matrix matrix, Direction direction);

}  // namespace korgst

#endif
