#include "app/marvo_engine.h"
