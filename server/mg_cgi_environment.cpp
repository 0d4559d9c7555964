#include "server/http_conn.h"


