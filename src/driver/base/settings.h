// The settings and paths of the run. Their comments name who reads them; the run summary (console) and the
// log header (log) show most of them, too. None changes once the first packet is read.
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
extern bool Verbose;         ///< console table; false: "Meg:" counter. Read: progress.
extern bool Log_on;          ///< packet logs, of the run and of each unit. Read: convert, unit, event, setup.
extern bool Log_dt;          ///< summary lines of DT packets in units' logs, too. Read: convert.
extern bool Qcc_on;          ///< QC files, of the run and of each unit. Read: convert, unit, setup.
extern uint16_t Name_option; ///< traces named by 0 station if known, 1 unit ID, 2 station. Read: chn_name.
extern uint16_t Path_option; ///< levels of directories below the output path, 0 to 4. Read: chn_name.
extern float Smp_rate_cmd;   ///< samples per second. kept: rate-only-shown. Read: console, log.
extern uint32_t Smp_limit;   ///< most samples written per channel and event. Read: channel, sac.
extern bool Smp_limit_set;   ///< -S set it; else it is what a SAC header can count. Read: sac.
extern uint32_t Smp_skip;    ///< samples dropped per channel and event. Read: channel.
extern std::string Cmd_line; ///< the command line as typed, cut at Path_max characters. Read: log.
extern std::string FileIn;   ///< input file as typed. Read: setup, unit.

// Set by setup, after the command line; DirOut is then what the user typed, or empty.
extern std::string DirOut;    ///< output path, ends in "/". Read: unit, chn_name.
extern std::string DirOrg;    ///< working directory at the start. Read: setup.
extern std::string FileIni;   ///< INI file; without one, its path with a note appended. Read: ini.
extern std::string FileLog;   ///< packet log of the run. Read: setup.
extern std::string FileQcc;   ///< QC file of the run. Read: setup.
extern std::string File_temp; ///< base name of the input file. Read: setup.

extern time_t Sys_time; ///< start of the run. Set: main. Read: log, sac.

/// Sets every setting to its default, but not the paths.
void set_defaults();

/// The text for Name_option in the run summary and the log header.
const char* name_option_text();

/// The text for a flag there.
inline const char* yes_no(bool on)
{
    return on ? "YES" : "NO";
}
