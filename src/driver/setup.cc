#include "driver/setup.h"

#include "driver/base/fatal.h"
#include "driver/base/file.h"
#include "driver/base/run_files.h"
#include "driver/base/settings.h"
#include "output/log.h"
#include "output/qcc.h"

#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

extern char** environ; // NOLINT(readability-redundant-declaration): POSIX leaves it to us

namespace {

/// The working directory; empty when it is unknown or longer than Path_max.
std::string working_directory()
{
    char path[Path_max + 1];
    return getcwd(path, sizeof path) ? path : "";
}

/// kept: ini-variable. The variable's name ends in "=", so only an entry VXU==path is found. Some C libraries
/// do not look for such a name, so this reads the entries itself.
const char* ini_path_of_environment()
{
    static constexpr char name[] = "VXU==";
    for (char** entry = environ; entry && *entry; ++entry)
        if (strncmp(*entry, name, sizeof name - 1) == 0) return *entry + sizeof name - 1;
    return nullptr;
}

/// The input's name without directory and extension. The extension begins at the last "." of the whole path,
/// even if that is in the name of a directory; the name begins after the last "/" before it. A "/" at the
/// start of the path belongs to the name.
std::string base_name(const std::string& path)
{
    const size_t dot = path.rfind('.');
    const size_t end = dot == std::string::npos ? path.size() : dot;
    size_t start = end;
    while (start > 0) {
        if (path[start - 1] == '/' && start > 1) break;
        --start;
    }
    return path.substr(start, end - start);
}

/// Ends the run (20) if a log or QC file is the input file, which opening it would empty.
void refuse_input(const char* path)
{
    if (same_file(path, FileIn.c_str())) shut_down(FATAL_OPEN, path);
}

void open_run_file(OUT_FILE& file, const std::string& path, void (*write_header)(OUT_FILE&))
{
    refuse_input(path.c_str());
    if (!out_open_vx(file, path.c_str(), OUT_MODE::truncate, log_lost)) shut_down(FATAL_OPEN, path.c_str());
    write_header(file);
}

} // namespace

void settle_paths()
{
    if (FileIn.size() > Path_max) shut_down(FATAL_OPEN, FileIn.c_str());
    DirOrg = working_directory();
    if (DirOut.empty()) {
        if (DirOrg.empty()) shut_down(FATAL_NO_DIRECTORY, ".");
        DirOut = DirOrg;
    } else if (!fexist(DirOut.c_str())) {
        shut_down(FATAL_NO_DIRECTORY, DirOut.c_str());
    }
    const bool slash_missing = DirOut.back() != '/';
    if (DirOut.size() + slash_missing > Path_max) shut_down(FATAL_NO_DIRECTORY, DirOut.c_str());
    if (slash_missing) DirOut += Dir_sep;
}

void find_ini_file(const char* argv0)
{
    if (const char* path = ini_path_of_environment()) {
        FileIni = path;
    } else if (fexist(Fname_ini)) {
        FileIni = DirOrg;
        if (!DirOrg.empty()) FileIni += Dir_sep;
        FileIni += Fname_ini;
    } else {
        // kept: ini-beside-program. Without a "/" nothing is cut: "vx_sac" gives "vx_sacvxu.ini".
        const char* slash = strrchr(argv0, '/');
        FileIni.assign(argv0, slash ? static_cast<size_t>(slash + 1 - argv0) : strlen(argv0));
        FileIni += Fname_ini;
    }
    // kept: note-in-the-path. The note is part of the path. A file with just that name would be read.
    if (!fexist(FileIni.c_str())) FileIni += " - not found; using defaults";
}

void open_run_files()
{
    File_temp = base_name(FileIn);
    FileLog = DirOut + File_temp + Fn_ext_log;
    FileQcc = DirOut + File_temp + Fn_ext_qcc;
    if (Log_on) open_run_file(FdLog, FileLog, Log_fhdr);
    if (Qcc_on) open_run_file(FdQcc, FileQcc, Qcc_fhdr);
}

bool open_input()
{
    FdIn = fopen_vx(FileIn.c_str(), "rb");
    if (!FdIn) shut_down(FATAL_OPEN, FileIn.c_str());
    struct stat what;
    return fstat(fileno(FdIn), &what) != 0 || what.st_size != 0;
}
