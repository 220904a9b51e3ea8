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

/// Converts the input. Returns the exit status: 1 if the input is empty, else 0.
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
    signal(SIGPIPE, SIG_IGN); // nobody reads the console any more: the run goes on
    signal(SIGXFSZ, SIG_IGN); // a write past the limit of file size fails and does not kill the run
    console_start();
    print_banner();
    console_show();
    Sys_time = time(nullptr);
    set_defaults();
    read_command_line(argc, argv);
    settle_paths();
    find_ini_file(argv[0]); // exists, since read_command_line ends a run without arguments
    open_run_files();
    print_summary();
    console_show();
    end_run(convert_all());
} catch (const std::bad_alloc&) {
    shut_down(FATAL_MEMORY, nullptr);
}
