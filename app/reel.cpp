#include "app/reel.h"
