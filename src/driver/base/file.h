// Opens files with retries, looks whether files exist, creates directories.
#pragma once

#include "driver/base/outfile.h"

#include <cstddef>
#include <cstdio>
#include <string_view>

/// Opens a file; retries for five seconds, since a disk may have to spin up. If descriptors run out, output
/// files give up theirs. Null when it fails.
FILE* fopen_vx(const char* path, const char* mode);

/// The same for a file that is only read, and that must not block: a FIFO or a socket cannot be opened.
/// Without `patient` it tries once.
FILE* fopen_ready_vx(const char* path, bool patient);

/// out_open with the same retries; fails at once when the name is taken (EEXIST).
bool out_open_vx(OUT_FILE& file, const char* path, OUT_MODE mode, ON_LOSS on_loss);

/// True if the path exists. Links are followed.
bool fexist(const char* path);

/// After a failed stat() or access(): true if errno leaves open whether the file exists.
bool look_failed();

/// True when a file, a directory or a link, even a dangling one, has this path.
bool name_taken(const char* path);

/// True when both paths name one existing file (same device and inode), or when this cannot be determined.
bool same_file(const char* a, const char* b);

/// Creates every missing directory of a path, up to its last "/"; the rest is a file name. Leaves levels that
/// end before place `from` alone. Ignores errors: opening the file will fail.
void Make_dir(const char* path, size_t from = 0);
