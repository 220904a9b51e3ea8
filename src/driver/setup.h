// Everything between the command line and the first packet: output path, INI file, the run-wide files.
#pragma once

/// Settles DirOrg and DirOut. A missing output path, or a working directory that cannot be had, is fatal
/// error 10; a path too long for the records is refused (20 for the input, 10 for the output).
void settle_paths();

/// Settles FileIni; `argv0` is how the program was called. Notes on it when there is no such file.
void find_ini_file(const char* argv0);

/// Names FileLog and FileQcc after the input and opens, with their headers, those that are switched on.
/// Fatal error 20 naming the file when that fails, or when it is the input itself.
void open_run_files();

/// Opens the input; fatal error 20 naming it. False when the file system says that it is empty.
bool open_input();
