#include "app/key_map.h"
