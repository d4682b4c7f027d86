#include "app/rolling_file.h"
