#include "app/text.h"
