// Mapping a table file and building its decoders. A file is untrusted: its headers are compared
// with its signature, and the decoders know the end of the file. The first probe that needs a file
// maps it, and the registry unmaps it.
#pragma once

#include "tablebase/table_entry.h"

namespace brindlemoth {

// Maps the file of a kind, KIND_WDL or KIND_DTZ, and builds its decoders. `name` is the signature
// in the name of the file. Returns false if there is no such file, if its headers are wrong
// ("Corrupted table." on standard error), or if there is no memory; the entry then has no view and
// no decoders of the kind. Ends the process with status 1 if the system refuses to map an existing
// file.
bool syzygy_map_table(TableEntry& entry, const char* name, TableKind kind);

// Unmaps the file of a kind and frees its decoders. Reports failures on standard error.
void syzygy_unmap_table(TableEntry& entry, TableKind kind);

// The extension of the files of a kind, including its dot.
const char* table_extension(TableKind kind);

} // namespace brindlemoth
