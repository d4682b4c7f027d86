#include "app/jobs.h"
