#include "app/moment.h"
