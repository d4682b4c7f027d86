#include "app/settings.h"
