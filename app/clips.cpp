#include "app/clips.h"
