#include "driver/base/settings.h"

bool Verbose;
bool Log_on;
bool Log_dt;
bool Qcc_on;
uint16_t Name_option;
uint16_t Path_option;
float Smp_rate_cmd;
uint32_t Smp_limit;
bool Smp_limit_set;
uint32_t Smp_skip;
time_t Sys_time;

std::string Cmd_line;
std::string FileIn;
std::string DirOut;
std::string DirOrg;
std::string FileIni;
std::string FileLog;
std::string FileQcc;
std::string File_temp;

void set_defaults()
{
    Verbose = true;
    Log_on = true;
    Log_dt = false;
    Qcc_on = false;
    Name_option = 0;
    Path_option = 0;
    Smp_rate_cmd = 100.0F;
    Smp_limit = 0xFFFFFFFF;
    Smp_limit_set = false;
    Smp_skip = 0;
}

const char* name_option_text()
{
    switch (Name_option) {
    case 0: return "Auto";
    case 1: return "Unit ID";
    default: return "Station";
    }
}
