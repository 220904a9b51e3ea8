#include "driver/settings.h"

uint8_t Verbose;
uint16_t Log_on;
uint8_t Log_dt;
uint16_t Qcc_on;
uint16_t Name_option;
uint16_t Path_option;
float Smp_rate_cmd;
uint32_t Smp_limit;
uint32_t Smp_skip;
FLAG_INFO Flag_info;
time_t Sys_time;

std::string Cmd_line;
std::string FileIn;
std::string DirOut;
std::string DirOrg;
std::string FileIni;
std::string FileLog;
std::string FileQcc;
std::string File_temp;
std::string Fn_dir;

FILE* FdIn;
OUT_FILE FdLog;
OUT_FILE FdQcc;

void set_defaults()
{
    Verbose = 1;
    Log_on = 1;
    Log_dt = 0;
    Qcc_on = 0;
    Name_option = 0;
    Path_option = 0;
    Smp_rate_cmd = 100.0F;
    Smp_limit = 0xFFFFFFFF;
    Smp_skip = 0;
    Flag_info = {1, 0};
}

const char* name_option_text()
{
    switch (Name_option) {
    case 0: return "Auto";
    case 1: return "Unit ID";
    default: return "Station";
    }
}
