// The run from first to last.
#include "driver/base/console.h"
#include "driver/base/fatal.h"
#include "driver/base/settings.h"
#include "driver/cmdline.h"
#include "driver/setup.h"
#include "packet/loop/convert.h"

#include <csignal>
#include <cstdio>
#include <new>

/// The exit status: 1 for an input that is empty, else 0.
static int convert_all()
{
    if (!open_input()) return 1;
    vx_cvt();
    vx::fcloseall();
    printf("\r\n");
    return 0;
}

int main(int argc, char** argv)
try {
    signal(SIGXFSZ, SIG_IGN); // a file too large for the user's limit is a failed write, not a sudden end
    console_start();
    print_banner();
    Sys_time = time(nullptr);
    set_defaults();
    read_command_line(argc, argv);
    settle_paths();
    find_ini_file(argv[0]); // there is one: without arguments read_command_line ends the run
    open_run_files();
    print_summary();
    end_run(convert_all());
} catch (const std::bad_alloc&) {
    shut_down(FATAL_MEMORY, nullptr);
}
