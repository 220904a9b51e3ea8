// The run from first to last.
#include "driver/cmdline.h"
#include "driver/console.h"
#include "driver/fatal.h"
#include "driver/settings.h"
#include "driver/setup.h"
#include "packet/convert.h"

#include <csignal>
#include <new>

static int convert_all()
{
    if (!open_input()) return 1;
    const int result = vx_cvt();
    vx::fcloseall();
    printf("\r\n");
    return result;
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
    find_ini_file(argv[0]); // where argc is 0, the run has ended
    open_run_files();
    print_summary();
    end_run(convert_all());
} catch (const std::bad_alloc&) {
    shut_down(FATAL_MEMORY, nullptr, nullptr);
}
