#include "driver/base/console.h"

#include "driver/base/settings.h"
#include "driver/base/steady_clock.h"

#include <cinttypes>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

static bool On_terminal;

/// Opens /dev/null for each standard descriptor that the caller closed. Otherwise the next files opened would
/// get these numbers, and console text would be written into a trace.
static void fill_standard_descriptors()
{
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd)
        if (fcntl(fd, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) return;
}

void console_start()
{
    fill_standard_descriptors();
    static char buffer[65536];
    setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
    On_terminal = isatty(STDOUT_FILENO) != 0;
}

void console_show()
{
    if (On_terminal) fflush(stdout);
}

void console_tick()
{
    if (!On_terminal) return;
    static int64_t shown_ms;
    const int64_t now = steady_ms();
    if (now - shown_ms < 100) return;
    fflush(stdout);
    shown_ms = now;
}

void print_banner()
{
    printf("\n%s - Version %s", Program, Version);
    printf("\n%s", Banner);
}

void syntax()
{
    printf("\r\n\nPurpose:");
    printf("\r\n   Reads a file containing PASSCAL data packets and converts");
    printf("\r\n   the data to SAC format.");
    printf("\r\n\nUsage:");
    printf("\r\n   %s [switches] sourceFile [output_path] [switches]", Program);
    printf("\r\n\n Switches               Description                               Default    ");
    printf("\r\n ----------------------------------------------------------------------------");
    printf("\r\n   -Dc     include DT info in log file: Y, +, N or -              (NO)");
    printf("\r\n   -Lc     Log file output: Y, +, N or -                          (YES)");
    printf("\r\n   -Nc     file Name option:                                      (Auto)");
    printf("\r\n             0/A = use Station Name if present, else use Unit ID");
    printf("\r\n             1/I = always use Unit ID");
    printf("\r\n   -Pn     output Path levels                                     (0)");
    printf("\r\n             0 = no additional subdirectories");
    printf("\r\n             1 = one subdirectory level:  YYYY_DDD");
    printf("\r\n             2 = two subdirectory levels: YYYY_DDD/HH");
    printf("\r\n             3 = two subdirectory levels: YYYY_DDD/HH_MM");
    printf("\r\n             4 = two subdirectory levels: YYYY_DDD/HH_MM_SS");
    printf("\r\n   -Qc     QCC File output: Y, +, N or -                          (NO)");
    printf("\r\n   -Rn     sample Rate (if not found in the data)                 (100)");
    printf("\r\n   -Sn     Sample count per channel per event                     (4294967295)");
    // kept: usage-shows-skip. All other defaults are fixed texts; this is the current setting.
    printf("\r\n   -Tn     Trash n samples from each event                        (%" PRIu32 ")", Smp_skip);
    printf("\r\n   -Vc     Verbose message output: Y, +, N or -                   (ENABLED)");
    printf("\r\n\nSwitches may appear anywhere on the command line.");
    printf("\r\nArguments and switches are NOT case sensitive.");
    printf("\r\n");
}

void print_summary()
{
    printf("\n\n     Input File : %s", FileIn.c_str());
    printf("\n       INI File : %s", FileIni.c_str());
    printf("\n  Original Path : %s", DirOrg.c_str());
    printf("\n    Output Path : %s", DirOut.c_str());
    printf("\n    Path Option : %u", Path_option);
    printf("\n    Name Option : %s", name_option_text());
    printf("\n     Log enable : %s", yes_no(Log_on));
    printf("\n    Log DT Blks : %s", yes_no(Log_dt));
    printf("\n       Log File : %s", FileLog.c_str());
    printf("\n     QCC enable : %s", yes_no(Qcc_on));
    printf("\n       QCC File : %s", FileQcc.c_str());
    printf("\n    Sample Rate : %.4f", static_cast<double>(Smp_rate_cmd));
    printf("\n    Max Samples : %" PRIu32, Smp_limit);
    printf("\n   Skip Samples : %" PRIu32, Smp_skip);
    printf("\n\nPress CTRL-BRK or CTRL-C to abort.\n");
}
