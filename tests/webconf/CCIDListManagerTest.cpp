#include "tests/webconf/CIDManager.h"
