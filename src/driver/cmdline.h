// The walk over the arguments, and one table of switches.
#pragma once

/// Sets the settings, FileIn, DirOut (empty when not given) and Cmd_line. A usage error prints the usage
/// text and ends the run with status 2.
void read_command_line(int argc, char** argv);
