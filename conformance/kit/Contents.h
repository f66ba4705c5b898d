// What stands in the sources of a case. Some pictures know what part a plane has in the conversion: they hold every
// colour, or every combination of samples that a function brings together.
#ifndef KOR_CONFORMANCE_KIT_CONTENTS_H
#define KOR_CONFORMANCE_KIT_CONTENTS_H

#include <cstddef>

#include "conformance/core/Catalogue.h"
#include "conformance/kit/Plane.h"

namespace kit {

void FillSource(const Plane& plane, const Layout& layout, std::size_t index, const Case& options);

// The pictures of 512 by 512 that show a function everything: Colours, where samples are weighed together, else Pairs.
struct ColourPictures {
    Pattern pattern;
    std::size_t count;
};

ColourPictures PicturesOf(const Entry& entry);

}  // namespace kit

#endif
