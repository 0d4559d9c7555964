#include "server/mg_hash.h"
