// The page-population requests, dropped: linked into a variant of tarn so
// that road_bench can measure what the background thread pays for.

#include "support/prefault.h"

namespace tarn_prefault {

void populate_in_background(void*, std::size_t) {}

void drain() {}

}  // namespace tarn_prefault
