#include "tests/support/platform_fixture.h"
