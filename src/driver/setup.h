// All that happens between the command line and the first packet: output path, INI file, run-wide files.
#pragma once

/// Sets DirOrg and DirOut. The run ends with 10 when the output path does not exist, when none is given and
/// the working directory is unknown, or when the output path is longer than Path_max; with 20 when the
/// input's path is.
void settle_paths();

/// Sets FileIni; `argv0` is the program's name as called. Appends a note if there is no such file.
void find_ini_file(const char* argv0);

/// Sets FileLog and FileQcc after the input's name, opens those that are switched on and writes their
/// headers. If this fails, or if the file is the input, the run ends (20) and names the file.
void open_run_files();

/// Opens the input. If that fails, the run ends (20) and names it. False when the file is empty.
bool open_input();
