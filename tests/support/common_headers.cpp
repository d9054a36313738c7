#include "common_headers.h"
