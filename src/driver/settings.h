// The run's settings, paths and run-wide files: declared and given their defaults, nothing else.
// The command line sets them, once; after that every room only reads them.
#pragma once

#include "driver/outfile.h"

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>

inline constexpr char Program[] = "VX_SAC";
inline constexpr char Version[] = "sps16   "; ///< five characters and three blanks, as every log shows it
inline constexpr char Banner[] = "PASSCAL packets to SAC traces, packet logs and QC statistics";
inline constexpr char Dir_sep[] = "/";
inline constexpr char Fname_ini[] = "vxu.ini";
inline constexpr char Fn_ext_log[] = ".vxl";
inline constexpr char Fn_ext_qcc[] = ".qcc";
inline constexpr char Fn_ext_chn[] = ".sac";
inline constexpr size_t Path_max = 131; ///< most characters of a path that a user may give

struct FLAG_INFO {
    uint8_t trace_hdr; ///< rewrite the SAC header when a trace is finished; always on
    uint16_t gather;   ///< always off; shown in the logs
};

extern uint8_t Verbose;      ///< 1: console table, 0: "Meg:" counter.           Read: progress.
extern uint16_t Log_on;      ///< packet logs, run-wide and per unit.
extern uint8_t Log_dt;       ///< unit logs also get the summary lines of DT packets.
extern uint16_t Qcc_on;      ///< QC files, run-wide and per unit.
extern uint16_t Name_option; ///< SAC names: 0 station name if there is one, 1 unit ID, 2 station name.
extern uint16_t Path_option; ///< levels of directories below the output path, 0 to 4.
extern float Smp_rate_cmd;   ///< -R, samples per second; shown, never used.
extern uint32_t Smp_limit;   ///< most samples written per channel and event.      Read: channel, sac.
extern uint32_t Smp_skip;    ///< samples dropped per channel and event.           Read: channel.
extern FLAG_INFO Flag_info;
extern time_t Sys_time; ///< start of the run.                            Read: log header, SAC header.

extern std::string Cmd_line;  ///< the command line as typed, cut at Path_max characters
extern std::string FileIn;    ///< input file as named on the command line
extern std::string DirOut;    ///< output path, ends in "/"
extern std::string DirOrg;    ///< working directory at start
extern std::string FileIni;   ///< INI file path; carries a note, and so names no file, when there is none
extern std::string FileLog;   ///< run-wide packet log
extern std::string FileQcc;   ///< run-wide QC file
extern std::string File_temp; ///< base name of the input file
extern std::string Fn_dir;    ///< copy of DirOut; nothing reads it

extern FILE* FdIn;     ///< the input; null until opened
extern OUT_FILE FdLog; ///< run-wide packet log
extern OUT_FILE FdQcc; ///< run-wide QC file

/// Puts every setting at its default; the paths and files are left alone.
void set_defaults();

/// The name of a Name_option value, as the run summary and the log header show it.
const char* name_option_text();

/// "YES" or "NO", as summary and log header show a flag.
inline const char* yes_no(bool on)
{
    return on ? "YES" : "NO";
}
