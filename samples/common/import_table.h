/**
 * @file import_table.h
 * The functions that a loaded module imports, which can be replaced for that module alone.
 */
#pragma once

#include <windows.h>

namespace vok::sample {

/// From now on the module calls `substitute`, which must have the same type, instead of the
/// function of that name. Other modules of the process keep theirs.
/// @return False when the module does not import the function, or its table can't be written.
bool replaceImport(HMODULE library, const char* name, FARPROC substitute);

}  // namespace vok::sample
