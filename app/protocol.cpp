#include "app/protocol.h"
