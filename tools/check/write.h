// The three ways of telling a report. Each gives text for standard output.
#pragma once

#include "check/options.h"
#include "check/report.h"

#include <string>

namespace check {

/// One JSON object and a line end. docs/vx_check.schema.json describes it.
std::string as_json(const Report& report, const Options& options);

/// One line of tab-separated values for each gap and overlap, and the line above them.
std::string as_gaps(const Report& report);
extern const char Gaps_header[];

/// How a table may look.
struct TableStyle {
    int columns = 0; ///< of the terminal; 0: none
    bool colour = false;
};
std::string as_table(const Report& report, const Options& options, const TableStyle& style);

/// The status that the report alone gives.
int status_of(const Report& report, const Options& options);

/// What the file is, in words: "empty", "not a recording (gzip data)", or why it could not be read.
std::string kind_text(const Report& report);

} // namespace check
