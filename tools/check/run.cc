#include "check/run.h"

#include "check/inspect.h"
#include "check/progress.h"
#include "check/station_file.h"
#include "check/write.h"
#include "driver/base/settings.h"
#include "driver/cmdline.h"
#include "driver/setup.h"
#include "ls/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace check {

namespace {

constexpr char Converter[] = "vx_sac";

/// Adds what the name of the input alone says.
void check_name(Report& report)
{
    const size_t slash = report.file.rfind('/');
    const std::string name = report.file.substr(slash == std::string::npos ? 0 : slash + 1);
    const std::string base = name.substr(0, name.rfind('.'));
    const bool like_log = base.size() == 6 && base.starts_with("ID") &&
                          base.find_first_not_of("0123456789ABCDEF", 2) == std::string::npos;
    if (like_log)
        report.findings.add(Code::log_name, {},
                            "the logs of the run and of recorder " + base.substr(2) + " get the same name");
    if (report.file.size() > Path_max)
        report.findings.add(Code::long_path, {},
                            "its path has " + std::to_string(report.file.size()) +
                                " characters, and vx_sac takes " + std::to_string(Path_max));
}

Report look_through(const std::string& file, const StationFile& station_file)
{
    Report report;
    report.file = file;
    const int descriptor =
        file == "-" ? dup(STDIN_FILENO) : open(file.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) {
        report.error = errno;
        return report;
    }
    {
        BlockReader reader(descriptor);
        Progress progress(file, descriptor);
        inspect(reader, report, [&](uint64_t bytes) { progress.tell(bytes); });
    }
    close(descriptor);
    if (report.kind == FileKind::recording) {
        check_name(report);
        check_station_file(station_file, report);
    }
    report.findings.sort();
    return report;
}

void tell(const Report& report, const Options& options, OwnOutput& out)
{
    switch (options.view) {
    case View::json: out.write(as_json(report, options)); break;
    case View::gaps: out.write(as_gaps(report)); break;
    default: {
        const char* no_colour = getenv("NO_COLOR");
        out.write(
            as_table(report, options, {out.columns(), out.is_terminal() && !(no_colour && *no_colour)}));
    }
    }
}

} // namespace

void take_switches(const std::vector<std::string>& switches)
{
    set_defaults();
    std::vector<std::string> words{Converter};
    words.insert(words.end(), switches.begin(), switches.end());
    words.push_back("recording");
    std::vector<char*> argv;
    argv.reserve(words.size());
    for (std::string& word : words) argv.push_back(word.data());
    read_command_line(static_cast<int>(argv.size()), argv.data());
    Log_on = Qcc_on = false; // nothing is written
}

void settle_station_file(const Options& options, const char* argv0)
{
    if (!options.ini.empty()) {
        FileIni = options.ini;
        return;
    }
    const std::string called = argv0 ? argv0 : "";
    const size_t slash = called.rfind('/');
    find_ini_file((called.substr(0, slash == std::string::npos ? 0 : slash + 1) + Converter).c_str());
}

OwnOutput::OwnOutput()
{
    fflush(stdout);
    const int copy = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (copy < 0) return;
    file_ = fdopen(copy, "w");
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere >= 0) {
        dup2(nowhere, STDOUT_FILENO);
        ::close(nowhere);
    }
}

OwnOutput::~OwnOutput()
{
    close();
}

bool OwnOutput::is_terminal() const
{
    return isatty(fileno(file_)) == 1;
}

int OwnOutput::columns() const
{
    winsize size{};
    if (!is_terminal() || ioctl(fileno(file_), TIOCGWINSZ, &size) != 0) return 0;
    return size.ws_col ? size.ws_col : 80;
}

void OwnOutput::write(const std::string& text)
{
    if (!error_ && (fwrite(text.data(), 1, text.size(), file_) != text.size() || fflush(file_) != 0))
        error_ = errno;
}

bool OwnOutput::close()
{
    if (file_ && fclose(file_) != 0 && !error_) error_ = errno;
    file_ = nullptr;
    errno = error_;
    return error_ == 0;
}

int check_files(const Options& options, OwnOutput& out)
{
    int worst = 0;
    StationFile station_file;
    if (const int error = station_file.read(FileIni); error && !options.ini.empty()) {
        fprintf(stderr, "vx_check: %s: %s\n", ls::printable(options.ini).c_str(), strerror(error));
        return 3;
    }
    if (options.view == View::gaps) out.write(Gaps_header);
    for (const std::string& file : options.files) {
        const Report report = look_through(file, station_file);
        const int status = status_of(report, options);
        if (status == 3)
            fprintf(stderr, "vx_check: %s: %s\n", ls::printable(file).c_str(), kind_text(report).c_str());
        worst = std::max(worst, status);
        tell(report, options, out);
    }
    return worst;
}

} // namespace check
