// The program's heap, counted, and failing on demand. Linked, it replaces the global new and
// delete.
#pragma once

namespace brindlemoth {

// How many of the allocations that may fail still succeed; negative: all of them.
extern int allocations_left;
// Blocks in use.
extern int live_allocations;

} // namespace brindlemoth
