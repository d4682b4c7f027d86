#include "app/clip_file.h"
