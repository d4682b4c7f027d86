#include "app/recording_name.h"
