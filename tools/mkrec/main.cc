// vx_mkrec: a field recording made up from its arguments. Statuses: 0 done, 1 not written, 2 bad arguments.
#include "mkrec/mseed.h"
#include "mkrec/recording.h"

#include <cstdio>

using namespace mkrec;

static constexpr int Not_written = 1, Bad_arguments = 2;

static bool write_file(const SURVEY& survey, const std::string& path, bool (*write)(const SURVEY&, OUTPUT&))
{
    OUTPUT out;
    if (!out.open(path)) {
        fprintf(stderr, "vx_mkrec: cannot write %s: %s\n", path.c_str(), out.why().c_str());
        return false;
    }
    const bool encodable = write(survey, out);
    if (!encodable) fprintf(stderr, "vx_mkrec: samples too far apart for Steim-2 in %s\n", path.c_str());
    const bool closed = out.close();
    if (!closed) fprintf(stderr, "vx_mkrec: write error in %s: %s\n", path.c_str(), out.why().c_str());
    return encodable && closed;
}

/// What goes to standard output is a recording at times, so a write that failed must not pass unseen.
static int say(const char* text)
{
    return fputs(text, stdout) >= 0 && fflush(stdout) == 0 ? 0 : Not_written;
}

int main(int argc, char** argv)
{
    OPTIONS options;
    SURVEY survey;
    std::string complaint;
    if (!read_options(std::vector<std::string>(argv + (argc ? 1 : 0), argv + argc), options, complaint)) {
        fprintf(stderr, "vx_mkrec: %s\nTry vx_mkrec --help\n", complaint.c_str());
        return Bad_arguments;
    }
    if (options.help) return say(Help_text);
    if (options.version) return say("vx_mkrec " VX_VERSION "\n");
    if (!make_survey(options, survey, complaint)) {
        fprintf(stderr, "vx_mkrec: %s\n", complaint.c_str());
        return Bad_arguments;
    }
    if (!write_file(survey, options.out, write_recording)) return Not_written;
    if (!options.mseed.empty() && !write_file(survey, options.mseed, write_mseed)) return Not_written;
    return 0;
}
