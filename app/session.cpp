#include "app/session.h"
