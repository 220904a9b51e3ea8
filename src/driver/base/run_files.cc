#include "driver/base/run_files.h"

FILE* FdIn;
OUT_FILE FdLog;
OUT_FILE FdQcc;
