// Mapping a table file and building its decoders. A file is untrusted: its headers are held against
// its signature before anything relies on them, and the decoders know where the file ends.
// Called by the probe that first needs the file, and by the registry to give it back.
#pragma once

#include "tablebase/table_entry.h"

namespace brindlemoth {

// Maps the file of that kind and builds its decoders. `name` is the signature as the file is
// called. False when there is no such file, when nothing can be read ("Corrupted table." on
// standard error), or when memory runs out; the entry then holds nothing of the kind. Ends the
// process with status 1 if the system refuses to map an existing file.
bool syzygy_map_table(TableEntry& entry, const char* name, TableKind kind);

// Gives back what syzygy_map_table() acquired for one kind. Failures are reported on standard
// error.
void syzygy_unmap_table(TableEntry& entry, TableKind kind);

// The extension of a kind's files, with its dot.
const char* table_extension(TableKind kind);

} // namespace brindlemoth
