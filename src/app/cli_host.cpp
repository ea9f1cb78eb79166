#include "cli_host.h"
