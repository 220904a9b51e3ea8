// Opening files with patience, existence, directory paths.
#pragma once

#include "driver/outfile.h"

#include <cstdint>
#include <cstdio>

/// Tries to open until it succeeds or the clock has passed five whole seconds: a file on a slow or
/// waking disk gets its chance. Null after that.
FILE* fopen_vx(const char* path, const char* mode);

/// The same patience for an output file; only a name that is taken (EEXIST) fails at once.
bool out_open_vx(OUT_FILE& file, const char* path, OUT_MODE mode, ON_LOSS on_loss);

/// The same patience for a finished file whose first bytes are to be overwritten. False when it cannot be
/// opened.
bool out_overwrite_start_vx(const char* path, std::string_view bytes);

/// Opens a unit's log or QC file for appending; fatal error 20 naming it when that fails.
void open_file(OUT_FILE& file, const char* path, uint8_t* status_byte);

/// 1 if anything of that name exists, else 0.
uint8_t fexist(const char* path);

/// True when the look at a path that just failed (errno) tells nothing about what stands there.
bool look_failed();

/// True when a new file cannot have this name: anything stands there, be it a link to nowhere.
bool name_taken(const char* path);

/// True when both paths lead to one existing file (same device and inode), or when that cannot be found out.
bool same_file(const char* a, const char* b);

/// Creates every missing directory of a path, up to its last "/"; what follows is a file name. Errors
/// are ignored: the opening that follows tells.
void Make_dir(const char* path);
