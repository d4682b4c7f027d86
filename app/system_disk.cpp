#include "app/system_disk.h"
