// Opening files with patience, existence, directory paths.
#pragma once

#include "driver/base/outfile.h"

#include <cstdint>
#include <cstdio>
#include <string_view>

/// Tries to open a file until it succeeds or five whole seconds have passed: a disk may have to wake up. Null
/// after that.
FILE* fopen_vx(const char* path, const char* mode);

/// out_open with the same patience; only a name that is taken (EEXIST) fails at once.
bool out_open_vx(OUT_FILE& file, const char* path, OUT_MODE mode, ON_LOSS on_loss);

/// out_overwrite_start with the same patience.
bool out_overwrite_start_vx(const char* path, std::string_view bytes, ON_LOSS on_loss);

/// True if anything of that name exists.
bool fexist(const char* path);

/// After a failed stat() or access(): true if errno leaves open whether the file exists.
bool look_failed();

/// True when a new file cannot have this name, because it is that of a file, a directory or even a dangling
/// link.
bool name_taken(const char* path);

/// True when both paths lead to one existing file (same device and inode), or when that cannot be found out.
bool same_file(const char* a, const char* b);

/// Creates every missing directory of a path, up to its last "/"; what follows is a file name. Errors
/// are ignored: the opening that follows tells.
void Make_dir(const char* path);
