#ifndef TARN_SUPPORT_PREFAULT_H
#define TARN_SUPPORT_PREFAULT_H

// Fresh anonymous memory costs a page fault, and the kernel's zeroing of
// the page, at the first write. A large module touches gigabytes that way,
// all on the run's one thread. A block that is mapped now but filled a
// little at a time (an allocator's next region, a block of BDD nodes) can
// have its pages made present by a second thread meanwhile, on the other
// core: making a page present never changes what it holds, so this is safe
// whatever the owner writes in the meantime, and even if the block has
// been unmapped since (the request then fails quietly).

#include <cstddef>

namespace tarn_prefault {

// Asks for [p, p + n) to be made present in the background. Never blocks
// and never allocates through operator new (the allocator itself calls
// it); a request that finds the queue full, or a kernel that cannot do it,
// is dropped: this is only ever a speed-up.
void populate_in_background(void* p, std::size_t n);

// Waits until every request made so far has been served or dropped.
void drain();

}  // namespace tarn_prefault

#endif
