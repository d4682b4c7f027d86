#include "app/timeline.h"
