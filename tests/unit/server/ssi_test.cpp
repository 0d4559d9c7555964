#include "tests/unit/server/program_harness.h"
