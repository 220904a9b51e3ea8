// The handles of the files of the whole run. setup opens them, fatal closes them.
#pragma once

#include "driver/base/outfile.h"

#include <cstdio>

extern FILE* FdIn;     ///< the input; null until opened
extern OUT_FILE FdLog; ///< run-wide packet log
extern OUT_FILE FdQcc; ///< run-wide QC file
