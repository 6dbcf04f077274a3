#include "front/request_record.h"

cmd_config g_config;
