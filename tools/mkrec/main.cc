// vx_mkrec: writes a synthetic field recording. Statuses: 0 done, 1 not written, 2 bad arguments.
#include "driver/base/console.h"
#include "mkrec/mseed.h"
#include "mkrec/recording.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <new>

using namespace mkrec;

static constexpr int Not_written = 1, Bad_arguments = 2;

static bool open_file(RecordingFile& out, const std::string& path, bool force)
{
    if (out.open(path, force)) return true;
    if (out.error() == EEXIST)
        fprintf(stderr, "vx_mkrec: %s exists; --force overwrites it\n", path.c_str());
    else
        fprintf(stderr, "vx_mkrec: cannot write %s: %s\n", path.c_str(), out.why().c_str());
    return false;
}

/// Says what happens to an incomplete file.
static const char* what_is_left(const RecordingFile& out, const std::string& path)
{
    if (out.is_new()) return "; it is removed";
    return path == "-" ? "" : "; the file is incomplete";
}

static bool write_file(const Survey& survey, RecordingFile& out, const std::string& path,
                       bool (*write)(const Survey&, RecordingFile&))
{
    if (!write(survey, out)) {
        fprintf(stderr, "vx_mkrec: samples too far apart for Steim-2 in %s%s\n", path.c_str(),
                what_is_left(out, path));
        return false;
    }
    if (out.close()) return true;
    fprintf(stderr, "vx_mkrec: write error in %s: %s%s\n", path.c_str(), out.why().c_str(),
            what_is_left(out, path));
    return false;
}

/// Opens both files before the first one is written, so that a bad name is found at once.
static int write_files(const Survey& survey)
{
    const Options& options = survey.options;
    RecordingFile out, mseed;
    if (!open_file(out, options.out, options.force)) return Not_written;
    if (options.mseed.empty()) return write_file(survey, out, options.out, write_recording) ? 0 : Not_written;
    if (!open_file(mseed, options.mseed, options.force)) return Not_written;
    if (mseed.is_same_as(out)) {
        fprintf(stderr, "vx_mkrec: the recording and --mseed are the same file: %s\n", options.mseed.c_str());
        return Bad_arguments;
    }
    const bool written = write_file(survey, out, options.out, write_recording) &&
                         write_file(survey, mseed, options.mseed, write_mseed);
    return written ? 0 : Not_written;
}

/// Prints a text; a write that fails must give a status other than 0.
static int say(const char* text)
{
    return fputs(text, stdout) >= 0 && fflush(stdout) == 0 ? 0 : Not_written;
}

int main(int argc, char** argv)
try {
    signal(SIGXFSZ,
           SIG_IGN); // so that writing beyond the file size limit fails instead of killing the process
    console_start();
    Options options;
    Survey survey;
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
    return write_files(survey);
} catch (const std::bad_alloc&) {
    fprintf(stderr, "vx_mkrec: out of memory; the recording is not written\n");
    return Not_written;
}
