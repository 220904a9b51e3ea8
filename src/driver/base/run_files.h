// The files of the whole run: its input, its packet log, its QC file. Opened by setup, closed by fatal.
#pragma once

#include "driver/base/outfile.h"

#include <cstdio>

extern FILE* FdIn;     ///< the input; null until opened
extern OUT_FILE FdLog; ///< run-wide packet log
extern OUT_FILE FdQcc; ///< run-wide QC file
