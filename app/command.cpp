#include "app/command.h"
