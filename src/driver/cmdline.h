// Reads the command line, by a table of switches.
#pragma once

/// Sets the settings, FileIn, DirOut (empty when not given) and Cmd_line. After a usage error prints the
/// usage text and ends the run with status 2; an empty output path ends it with 10.
void read_command_line(int argc, char** argv);
