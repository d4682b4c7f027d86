#include "app/disk.h"
