// The run's settings and paths. Each says who sets it and who reads it; once the packets come, nobody sets
// any.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

inline constexpr char Program[] = "VX_SAC";
inline constexpr char Version[] = "sps16   "; ///< kept: version-sps16. The release has a number of its own
inline constexpr char Banner[] = "PASSCAL packets to SAC traces, packet logs and QC statistics";
inline constexpr char Dir_sep[] = "/";
inline constexpr char Fname_ini[] = "vxu.ini";
inline constexpr char Fn_ext_log[] = ".vxl";
inline constexpr char Fn_ext_qcc[] = ".qcc";
inline constexpr char Fn_ext_chn[] = ".sac";
inline constexpr size_t Path_max = 131; ///< most characters of a path that a user may give

// Set by the command line.
extern bool Verbose; ///< console table; false: "Meg:" counter.                 Read: progress.
extern bool
    Log_on; ///< packet logs, of the run and of each unit.             Read: convert, unit, event, setup.
extern bool Log_dt; ///< units' logs get summary lines of DT packets, too.     Read: convert.
extern bool Qcc_on; ///< QC files, of the run and of each unit.                Read: convert, unit, setup.
extern uint16_t
    Name_option; ///< trace names: 0 station name if there is one, 1 unit ID, 2 station name.  Read: chn_name.
extern uint16_t Path_option; ///< levels of directories below the output path, 0 to 4.  Read: chn_name.
extern float Smp_rate_cmd;   ///< samples per second; kept: rate-only-shown.            Read: console, log.
extern uint32_t Smp_limit;   ///< most samples written per channel and event.           Read: channel, sac.
extern uint32_t Smp_skip;    ///< samples dropped per channel and event.                Read: channel.
extern std::string Cmd_line; ///< the command line as typed, cut at Path_max.           Read: log.
extern std::string FileIn; ///< input file as named there.                            Read: setup, unit, log.

// Set by setup, once the command line is read; DirOut begins with what that says.
extern std::string
    DirOut; ///< output path, ends in "/".                            Read: unit, chn_name, log.
extern std::string DirOrg;  ///< working directory at start.                          Read: console, log.
extern std::string FileIni; ///< INI file, or kept: note-in-the-path.                Read: ini, console, log.
extern std::string FileLog; ///< packet log of the run.                               Read: console, log.
extern std::string FileQcc; ///< QC file of the run.                                  Read: console, log.
extern std::string File_temp; ///< base name of the input file.                         Read: setup.

extern time_t Sys_time; ///< start of the run.  Set: main.  Read: log header, SAC header.

/// Puts every setting at its default; the paths and files are left alone.
void set_defaults();

/// The name of a Name_option value, as the run summary and the log header show it.
const char* name_option_text();

/// "YES" or "NO", as summary and log header show a flag.
inline const char* yes_no(bool on)
{
    return on ? "YES" : "NO";
}
